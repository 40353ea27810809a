#include "simulator/CommandLine.h"

#include <QCommandLineOption>
#include <QCommandLineParser>

#include <chrono>
#include <cstdint>
#include <limits>

namespace tavril::simulator {
namespace {

constexpr long long longestTime_ms = 600'000;

/// Adds numbers to Qt's parser, and keeps the first error.
class Arguments {
 public:
  Arguments() {
    parser_.setApplicationDescription(QStringLiteral(
        "A virtual servo with its bridge on a pseudo-terminal. Prints the terminal's path and serves it "
        "until it is interrupted."));
    add("link", "Keep a symbolic link to the terminal at this path.", "PATH");
    add("log", "Write the traffic to this file, not to the standard error output.", "FILE");
    add("no-servo", "No servo is attached.");
    add("two-servos", "More than one servo is attached.");
    add("mute", "Never reply.");
    add("lose", "Lose one reply in so many, at random.", "N");
    add("delay", "Reply this much later.", "MS");
    add("start-up", "Ignore everything for this long after the start.", "MS");
    add("split", "Cut replies in pieces of this many bytes.", "N");
    add("split-gap", "Pause between pieces and before late ends (50).", "MS");
    add("glue", "Send two replies in one write, if a second comes within 100 ms.");
    add("noise", "Send random bytes between the replies.");
    add("seed", "Seed of the random bytes and losses (1).", "N");
    add("wrong-length", "Make the length byte of replies one too large.");
    add("late-ends", "Send the end mark of replies late.");
    add("error", "Answer register reads with this error report.", "CODE");
    add("write-error", "Answer register writes with this error report.", "CODE");
    add("obey-ack-policy",
        "Answer what ack_policy allows: 0 detection and registers 16 to 20, 1 all reads too, 2 everything. "
        "This is "
        "our guess; without this option everything is answered.");
    add("from", "Start with the settings of this file, made by \"tavrilctl dump\".", "FILE");
    add("state", "Keep the settings in this file: start with them if it exists, and save each change.",
        "FILE");
    add("unplug-after", "Hang up at this frame, without answering it, and exit.", "N");
    add("pace", "Take the time of a wire of 115200 baud (this is so by default).");
    add("no-pace", "Reply at once.");
    add("version", "Show the version and exit.");
    parser_.addOption(
        {{QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Show this help and exit.")});
  }

  bool parse(const QStringList &arguments) {
    if (!parser_.parse(arguments)) {
      complaint_ = parser_.errorText();
    } else if (!parser_.positionalArguments().isEmpty()) {
      complaint_ = QStringLiteral("Unexpected argument '%1'.").arg(parser_.positionalArguments().first());
    }
    return complaint_.isEmpty();
  }

  bool has(const char *name) const { return parser_.isSet(QString::fromLatin1(name)); }
  QString text(const char *name) const { return parser_.value(QString::fromLatin1(name)); }
  QString help() const {
    return parser_.helpText() +
           QStringLiteral(
               "\nExamples:\n"
               "  tavril-servo --link /tmp/servo                    a well-behaved servo; then, in another\n"
               "                                                    terminal: tavril --port /tmp/servo\n"
               "  tavril-servo --link /tmp/servo --lose 5 --noise   the same behind a bad cable\n"
               "  tavril-servo --link /tmp/servo --two-servos       one too many on the line\n"
               "  tavril-servo --link /tmp/servo --state servo.json keeps its settings from one start to the "
               "next\n");
  }
  QString complaint() const { return complaint_; }

  long long number(const char *name, long long otherwise, long long lowest, long long highest) {
    if (!has(name)) return otherwise;
    bool isNumber = false;
    const long long value = text(name).toLongLong(&isNumber);
    if (isNumber && value >= lowest && value <= highest) return value;
    complain(QStringLiteral("--%1 takes a number from %2 to %3, not '%4'.")
                 .arg(QString::fromLatin1(name))
                 .arg(lowest)
                 .arg(highest)
                 .arg(text(name)));
    return otherwise;
  }

  std::chrono::milliseconds time(const char *name, std::chrono::milliseconds otherwise) {
    return std::chrono::milliseconds(number(name, otherwise.count(), 0, longestTime_ms));
  }

  void refuseBoth(const char *one, const char *other) {
    if (!has(one) || !has(other)) return;
    complain(QStringLiteral("--%1 and --%2 exclude each other.")
                 .arg(QString::fromLatin1(one), QString::fromLatin1(other)));
  }

  void refuseEmpty(const char *name) {
    if (has(name) && text(name).isEmpty())
      complain(QStringLiteral("--%1 needs a path.").arg(QString::fromLatin1(name)));
  }

 private:
  void add(const char *name, const char *description, const char *value = nullptr) {
    parser_.addOption(QCommandLineOption(QString::fromLatin1(name), QString::fromLatin1(description),
                                         QString::fromLatin1(value)));
  }
  void complain(const QString &complaint) {
    if (complaint_.isEmpty()) complaint_ = complaint;
  }

  QCommandLineParser parser_;
  QString complaint_;
};

CommandLine showing(CommandLine::Action action, const QString &text) {
  CommandLine result;
  result.action = action;
  result.text = text;
  return result;
}

Options faultsFrom(Arguments &arguments) {
  Options options;
  if (arguments.has("no-servo")) options.servos = Options::Servos::None;
  if (arguments.has("two-servos")) options.servos = Options::Servos::Several;
  options.mute = arguments.has("mute");
  options.loseOneIn = static_cast<int>(arguments.number("lose", 0, 1, std::numeric_limits<int>::max()));
  options.delay = arguments.time("delay", options.delay);
  options.startUp = arguments.time("start-up", options.startUp);
  options.splitSize = static_cast<int>(arguments.number("split", 0, 1, 50));
  options.splitGap = arguments.time("split-gap", options.splitGap);
  options.glue = arguments.has("glue");
  options.noise = arguments.has("noise");
  options.seed = static_cast<std::uint32_t>(
      arguments.number("seed", options.seed, 0, std::numeric_limits<std::uint32_t>::max()));
  options.wrongLength = arguments.has("wrong-length");
  options.lateEnds = arguments.has("late-ends");
  if (arguments.has("error"))
    options.readError = static_cast<std::uint8_t>(arguments.number("error", 0, 0, 255));
  if (arguments.has("write-error"))
    options.writeError = static_cast<std::uint8_t>(arguments.number("write-error", 0, 0, 255));
  options.obeysReplyPolicy = arguments.has("obey-ack-policy");
  options.unplugAfter =
      static_cast<int>(arguments.number("unplug-after", 0, 1, std::numeric_limits<int>::max()));
  options.pace = !arguments.has("no-pace");
  return options;
}

}  // namespace

CommandLine CommandLine::parse(const QStringList &list) {
  Arguments arguments;
  if (!arguments.parse(list)) return showing(Action::Refuse, arguments.complaint());
  if (arguments.has("help")) return showing(Action::ShowText, arguments.help());
  if (arguments.has("version")) {
    return showing(Action::ShowText, QStringLiteral("tavril-servo " TAVRIL_VERSION "\n"));
  }
  arguments.refuseBoth("no-servo", "two-servos");
  arguments.refuseBoth("pace", "no-pace");
  arguments.refuseEmpty("link");
  arguments.refuseEmpty("log");
  arguments.refuseEmpty("from");
  arguments.refuseEmpty("state");
  CommandLine result;
  result.options = faultsFrom(arguments);
  result.link = arguments.text("link");
  result.logFile = arguments.text("log");
  result.from = arguments.text("from");
  result.state = arguments.text("state");
  if (!arguments.complaint().isEmpty()) return showing(Action::Refuse, arguments.complaint());
  return result;
}

}  // namespace tavril::simulator
