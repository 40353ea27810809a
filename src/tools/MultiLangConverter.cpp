#include "tools/MultiLangConverter.h"

#include "platform/FilePanels.h"
#include "platform/Log.h"
#include "platform/ScreenElement.h"
#include "platform/StringTable.h"
#include "platform/UserFiles.h"
#include "tools/FileSystem.h"
#include "tools/LinePairing.h"
#include "tools/TableFolder.h"
#include "tools/TextFile.h"

#include <QLatin1String>

namespace tavril {

namespace {

const QString spaceEscape = QStringLiteral("%20");
const QString scheme = QStringLiteral("file://");

}  // namespace

MultiLangConverter::MultiLangConverter(const Outlets &outlets, FilePanels &panels, UserFiles &files,
                                       TableFolder &tables, const StringTable &strings, Log &log)
    : outlets_(outlets), panels_(panels), files_(files), tables_(tables), strings_(strings), log_(log) {}

MultiLangConverter::~MultiLangConverter() = default;

void MultiLangConverter::viewDidLoad() {
  filepath_ = QLatin1String("");
}

void MultiLangConverter::key() {
  choose(u"key_file", keyArray_, outlets_.keypath);
}

void MultiLangConverter::value() {
  choose(u"value_file", valueArray_, outlets_.valuepath);
}

void MultiLangConverter::choose(QStringView title, QStringList &lines, ScreenElement &path) {
  const FilePanels::Choice choice = panels_.runOpenPanel({strings_.text(title), {QStringLiteral("txt")}});
  if (choice.result == FilePanels::Cancel) log_.write(QStringLiteral("Cancel button was pressed"));
  if (choice.result != FilePanels::OK) return;
  // Kept: C94.
  filepath_ = QString(choice.url).replace(spaceEscape, QStringLiteral(" ")).remove(scheme);
  filepatharray_ = filepath_.split(u'/');
  log_.write(QStringLiteral("file opened %1\n").arg(filepath_));
  readLines(lines);
  // Kept: C95.
  logList(keyArray_);
  path.setText(filepath_);
}

void MultiLangConverter::readLines(QStringList &lines) {
  const TextFile file = TextFile::read(files_, filepath_);
  if (!file.text) {
    log_.write(file.problem);
    lines.clear();
    return;
  }
  // Kept: C96.
  lines = file.text->split(u'\n');
}

void MultiLangConverter::converter() {
  const FilePanels::Choice choice = panels_.runSavePanel({strings_.text(u"convert"), {QStringLiteral("h")}});
  if (choice.result == FilePanels::Cancel) log_.write(QStringLiteral("Cancel"));
  if (choice.result != FilePanels::OK) return;
  log_.write(QStringLiteral("OK"));
  log_.write(QStringLiteral("file saved %1\n<save panel: %2>").arg(choice.name, choice.url));
  // Kept: C97.
  const QString name = choice.name + QStringLiteral(".h");
  // Kept: C98.
  const QString folder =
      QString(choice.url).remove(u'/' + name).remove(scheme).replace(spaceEscape, QStringLiteral(" "));
  log_.write(QStringLiteral("HOME : ") + folder);
  FileSystem_ = std::make_unique<FileSystem>(files_, log_);
  FileSystem_->delegate = this;
  FileSystem_->CreatFile(folder, name);
  write(folder, name);
}

void MultiLangConverter::write(const QString &folder, const QString &name) {
  const QString path = folder + u'/' + name;
  // Kept: C99.
  if (const auto error = files_.write(path, {})) {
    log_.warn(error->localizedDescription);
    return;
  }
  tables_.setFilepath(folder);
  const LinePairing pairing = LinePairing::of(keyArray_, valueArray_);
  if (pairing.missing) {
    log_.warn(QStringLiteral("Out of range: line %1 has a key but no value").arg(*pairing.missing + 1));
    return;
  }
  if (const auto error = files_.write(path, pairing.table.toUtf8())) log_.warn(error->localizedDescription);
}

void MultiLangConverter::FileResult(const QString &result) {
  log_.write(result);
}

void MultiLangConverter::logList(const QStringList &list) {
  if (log_.isEnabled()) log_.write(listText(list));
}

}  // namespace tavril
