#pragma once

#include "store/ManagedObject.h"

#include <QByteArray>
#include <QString>

namespace tavril {

class ManagedObjectModel;

/// The XML form of a store:
/// <store format="1" model="..."><object id="1" entity="..."><attribute name="..."
/// value="..."/></object></store>
class StoreDocument {
 public:
  static constexpr qsizetype largestSize = 16 * 1024 * 1024;

  static QByteArray write(const ManagedObjectModel &model, const ObjectTable &objects);

  /// Takes any bytes. If they are not a store or do not fit the model, returns false, sets `problem`, and
  /// leaves `objects` unchanged.
  static bool parse(const QByteArray &bytes, const ManagedObjectModel &model, ObjectTable &objects,
                    QString &problem);
};

}  // namespace tavril
