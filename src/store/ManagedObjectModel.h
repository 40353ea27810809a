#pragma once

#include "platform/Error.h"

#include <QByteArray>
#include <QMap>
#include <QMetaType>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <optional>

namespace tavril {

/// The entities and their attributes. Read from XML:
/// <model name="..."><entity name="..."><attribute name="..." type="..."/></entity></model>
/// where a type is one of string, integer (64 bits), double and boolean.
class ManagedObjectModel {
 public:
  static constexpr qsizetype largestSize = 1024 * 1024;

  /// Reads a file or a resource. If it is not a model, returns nothing and sets `error`.
  static std::optional<ManagedObjectModel> load(const QString &path, Error &error);
  static std::optional<ManagedObjectModel> parse(const QByteArray &bytes, Error &error);

  const QString &name() const { return name_; }
  QStringList entityNames() const { return entities_.keys(); }
  bool hasEntity(const QString &entity) const { return entities_.contains(entity); }
  /// The type of an attribute's values, or an invalid one if there is no such attribute.
  QMetaType typeOf(const QString &entity, const QString &attribute) const;
  /// Whether the attribute may have this value. Numbers must be finite.
  bool accepts(const QString &entity, const QString &attribute, const QVariant &value) const;

 private:
  using Attributes = QMap<QString, QMetaType>;

  QString name_;
  QMap<QString, Attributes> entities_;
};

}  // namespace tavril
