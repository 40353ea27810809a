#pragma once

#include <QMap>
#include <QString>
#include <QVariant>

#include <map>

namespace tavril {

/// Names an object within its store, from 1 upwards.
using ObjectId = qint64;

/// One object: the name of its entity, and the values of those attributes that have one.
struct ManagedObject {
  QString entityName;
  QMap<QString, QVariant> values;

  bool operator==(const ManagedObject &) const = default;
};

using ObjectTable = std::map<ObjectId, ManagedObject>;

}  // namespace tavril
