#pragma once

#include "editor/panels/MsgMain.h"
#include "editor/panels/WaitMain.h"
#include "editor/screen/EditorView.h"
#include "editor/screen/ViewController.h"
#include "protocol/CommandSender.h"
#include "protocol/HelpTables.h"
#include "protocol/SharedState.h"
#include "tests/support/PlainElement.h"
#include "tests/support/TestDesktop.h"

#include <QByteArray>

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <utility>
#include <vector>

namespace tavril {

/// A screen or panel of plain values. Elements come into being when they are first asked for.
class FakeView final : public EditorView, public PanelView {
 public:
  PlainElement &operator[](const char *name) { return made(QString::fromLatin1(name)); }

  ScreenElement &element(QStringView name) override { return made(name.toString()); }
  ScreenElement *controlWithTag(int tag) override {
    return tag >= 100 && tag <= 104 ? &made(QString::number(tag)) : nullptr;
  }
  void setLabelColor(QStringView label, LabelColor color) override { colors[label.toString()] = color; }
  void setLabelColor(int tag, LabelColor color) override { tagColors[tag] = color; }
  void setTitle(const QString &text) override { title = text; }
  void setLabelFontSize(QStringView label, double size_pt) override {
    fontSizes[label.toString()] = size_pt;
    labelPass.append(label.toString() + u'=' + element(label).text());
  }
  void setTextLook(QStringView textView, double size_pt, LabelColor color) override {
    textLooks[textView.toString()] = {size_pt, color};
  }
  DesignRect knobFrame() const override { return knob; }
  void setKnobFrame(const DesignRect &frame) override {
    knob = frame;
    ++knobMoves;
  }

  std::map<QString, LabelColor> colors;
  std::map<int, LabelColor> tagColors;
  std::map<QString, double> fontSizes;
  /// The labels in the order in which their font sizes were set, with the texts that they had then.
  QStringList labelPass;
  std::map<QString, std::pair<double, LabelColor>> textLooks;
  QString title;
  DesignRect knob{806, 593, 22, 22};
  int knobMoves = 0;

 private:
  PlainElement &made(const QString &name) {
    auto &element = elements_[name];
    if (!element) element = std::make_unique<PlainElement>(identifiers().value(name));
    return *element;
  }
  static const QHash<QString, QString> &identifiers() {
    static const QHash<QString, QString> all{
        {"sID_value", "sid"},
        {"MaxTemp_value", "maxtemp"},
        {"MinVolt_value", "minvolt"},
        {"MaxVolt_value", "maxvolt"},
        {"MaxLoad_value", "maxload"},
        {"Kp_value", "kp"},
        {"Ki_value", "ki"},
        {"Kd_value", "kd"},
        {"OverTemp_value", "overtemp"},
        {"OverVolt_value", "overvolt"},
        {"OverLoad_value", "overload"},
        {"CalibrationAngle_value", "calangle"},
    };
    return all;
  }

  std::map<QString, std::unique_ptr<PlainElement>> elements_;
};

/// Takes the frames, without their padding, and clears the buffer as the link does.
class FrameSender final : public CommandSender {
 public:
  explicit FrameSender(SharedState &state) : state_(state) {}
  void SendCMDtoMCU() override {
    sent.emplace_back(reinterpret_cast<const char *>(state_.SerialCMD.data()), state_.SerialCMD[1]);
    state_.SerialCMD.fill(0);
  }
  std::vector<QByteArray> sent;

 private:
  SharedState &state_;
};

inline std::vector<QByteArray> frames(std::initializer_list<const char *> hexadecimal) {
  std::vector<QByteArray> all;
  for (const char *frame : hexadecimal) all.push_back(QByteArray::fromHex(frame));
  return all;
}

/// The main screen's controller with both panels, loaded, on plain values and a virtual clock.
class EditorBench : public testing::Test {
 protected:
  EditorBench() {
    buildHelpTables(state, fakes.log);
    fakes.log.clear();
    controller.viewDidLoad();
    message.viewDidLoad();
    waiting.viewDidLoad();
  }

  /// What a tick does with this request; the word that is left afterwards.
  QString tickWith(const char *request) {
    state.ToolbarFlag = QString::fromLatin1(request);
    controller.update();
    return state.ToolbarFlag;
  }

  TestDesktop fakes;
  SharedState state;
  FrameSender sender{state};
  FakeView view;
  FakeView messageView;
  FakeView waitView;
  ViewController controller{state, sender, view, fakes.desktop};
  MsgMain message{state, sender, messageView, fakes.desktop};
  WaitMain waiting{state, waitView, fakes.desktop};
};

}  // namespace tavril
