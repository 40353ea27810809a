#pragma once

#include <QAbstractListModel>
#include <QModelIndex>
#include <QObject>
#include <QString>
#include <QVariant>

#include <functional>

namespace tavril {

/// The entries of the port dialog's combo box. The dialog gives their number and their texts.
class PortListModel final : public QAbstractListModel {
  Q_OBJECT

 public:
  using Count = std::function<int()>;
  using Text = std::function<QString(int index)>;

  PortListModel(Count count, Text name, Text details, QObject *parent = nullptr);

  int rowCount(const QModelIndex &parent = {}) const override;
  QVariant data(const QModelIndex &index, int role) const override;
  /// Reads the details again; the ports are the same.
  void refresh();
  /// Reads the whole list again.
  void reload();

 private:
  Count count_;
  Text name_;
  Text details_;
  int rows_ = 0;
};

}  // namespace tavril
