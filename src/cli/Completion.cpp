#include "cli/Completion.h"

#include "cli/CommandBook.h"
#include "cli/RegisterFacts.h"

#include <QChar>
#include <QRegularExpression>
#include <QStringList>

#include <algorithm>
#include <array>
#include <vector>

namespace tavril::cli {

namespace {

/// What can stand where a value is expected, found by how the definitions call it.
enum class ValueKind { Text, File, Port, Register, Setting, Assignment };

ValueKind kindOf(const QString &value) {
  if (value == u"FILE") return ValueKind::File;
  if (value == u"NAME|PATH") return ValueKind::Port;
  if (value == u"REGISTER") return ValueKind::Register;
  if (value == u"SETTING") return ValueKind::Setting;
  if (value == u"ASSIGNMENT") return ValueKind::Assignment;
  return ValueKind::Text;
}

QString registerNames() {
  QStringList names;
  for (const wire::Register &row : wire::registers) names.append(keyOf(row));
  return names.join(u' ');
}

QString settingNames() {
  QStringList names;
  for (const wire::Register &row : wire::settingRegisters) names.append(keyOf(row));
  return names.join(u' ');
}

QString namesOf(const std::vector<OptionEntry> &options) {
  QStringList names;
  for (const OptionEntry &option : options) names += option.names;
  names.removeDuplicates();
  return names.join(u' ');
}

const OptionEntry *operandOf(const CommandEntry &command) {
  for (const OptionEntry &option : command.options) {
    if (option.isOperand()) return &option;
  }
  return nullptr;
}

QString quoted(QString text) {
  return u'\'' + text.replace(u'\'', QStringLiteral("'\\''")) + u'\'';
}

// ---------------------------------------------------------------------------------------------------- bash

QString bashValue(const QString &value) {
  switch (kindOf(value)) {
    case ValueKind::File:
      return QStringLiteral("compopt -o filenames; mapfile -t COMPREPLY < <(compgen -f -- \"$cur\")");
    case ValueKind::Port:
      return QStringLiteral(
          "mapfile -t COMPREPLY < <(compgen -f -- \"$cur\"; "
          "compgen -W \"$(\"${COMP_WORDS[0]}\" ports --names 2>/dev/null)\" -- \"$cur\")");
    case ValueKind::Register:
      return QStringLiteral("_tavrilctl_left '' %1").arg(registerNames());
    case ValueKind::Setting:
      return QStringLiteral("_tavrilctl_left '' %1").arg(settingNames());
    case ValueKind::Assignment:
      return QStringLiteral("compopt -o nospace; _tavrilctl_left = %1").arg(settingNames());
    case ValueKind::Text:
      break;
  }
  return QStringLiteral(":");
}

/// What to complete behind options that take a value.
QString bashOptionValues(const std::vector<OptionEntry> &options, const QString &indent) {
  QString text;
  for (const OptionEntry &option : options) {
    if (option.isOperand() || option.value.isEmpty()) continue;
    text += indent + option.names.join(u'|') + QStringLiteral(") ") + bashValue(option.value) +
            QStringLiteral("; return ;;\n");
  }
  return text;
}

// ---------------------------------------------------------------------------------------------------- zsh

QString zshText(QString text) {
  for (const QChar special : {u'\\', u'[', u']', u':'}) text.replace(special, QStringLiteral("\\") + special);
  return text;
}

QString zshAction(const QString &value) {
  switch (kindOf(value)) {
    case ValueKind::File:
      return QStringLiteral("_files");
    case ValueKind::Port:
      return QStringLiteral(" _tavrilctl_ports");
    case ValueKind::Register:
      return QStringLiteral(" _tavrilctl_left \"\" ") + registerNames();
    case ValueKind::Setting:
      return QStringLiteral(" _tavrilctl_left \"\" ") + settingNames();
    case ValueKind::Assignment:
      return QStringLiteral(" _tavrilctl_left = ") + settingNames();
    case ValueKind::Text:
      break;
  }
  return QStringLiteral(" ");
}

QStringList zshSpecs(const std::vector<OptionEntry> &options) {
  QStringList specs;
  for (const OptionEntry &option : options) {
    const QString value = zshText(option.value) + u':' + zshAction(option.value);
    if (option.isOperand()) {
      specs.append(quoted((option.repeated ? QStringLiteral("*:") : QStringLiteral("1:")) + value));
      continue;
    }
    for (const QString &name : option.names) {
      QString spec = name + u'[' + zshText(option.description) + u']';
      if (!option.value.isEmpty()) spec += u':' + value;
      specs.append(quoted(spec));
    }
  }
  return specs;
}

// ---------------------------------------------------------------------------------------------------- fish

QString fishOption(const OptionEntry &option) {
  QString text;
  for (const QString &name : option.names) {
    text +=
        name.startsWith(u"--") ? QStringLiteral(" -l ") + name.mid(2) : QStringLiteral(" -s ") + name.mid(1);
  }
  switch (option.value.isEmpty() ? ValueKind::Text : kindOf(option.value)) {
    case ValueKind::File:
      text += QStringLiteral(" -r -F");
      break;
    case ValueKind::Port:
      text += QStringLiteral(" -r -F -a \"(tavrilctl ports --names 2>/dev/null)\"");
      break;
    case ValueKind::Setting:
      text += QStringLiteral(" -x -a ") + quoted(settingNames());
      break;
    default:
      if (!option.value.isEmpty()) text += QStringLiteral(" -x");
  }
  return text + QStringLiteral(" -d ") + quoted(option.description);
}

QString fishOperand(const QString &value) {
  switch (kindOf(value)) {
    case ValueKind::File:
      return QStringLiteral(" -F");
    case ValueKind::Register:
      return QStringLiteral(" -f -a ") +
             quoted(QStringLiteral("(__tavrilctl_left '' %1)").arg(registerNames()));
    case ValueKind::Assignment:
      return QStringLiteral(" -f -a ") +
             quoted(QStringLiteral("(__tavrilctl_left = %1)").arg(settingNames()));
    default:
      return QStringLiteral(" -f");
  }
}

}  // namespace

QString bashCompletion(const CommandBook &book) {
  QStringList commands;
  for (const CommandEntry &command : book.commands) commands.append(command.name);
  QString text =
      QStringLiteral(
          "# Completion of %1 for bash; made by \"%1 --generate bash\".\n"
          "# Offers those of the names that are not on the line yet: _tavrilctl_left SUFFIX NAME...\n"
          "_tavrilctl_left() {\n"
          "  local suffix=$1 name left=() used=\" ${COMP_WORDS[*]:1:COMP_CWORD-1} \"\n"
          "  shift\n"
          "  [[ $cur == = || $prev == = ]] && return\n"
          "  for name; do\n"
          "    [[ $used == *[[:space:]]\"$name\"[[:space:]=]* ]] || left+=(\"$name$suffix\")\n"
          "  done\n"
          "  mapfile -t COMPREPLY < <(compgen -W \"${left[*]}\" -- \"$cur\")\n"
          "}\n"
          "_%1() {\n"
          "  local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD-1]} command= word\n"
          "  local common=%2\n"
          "  COMPREPLY=()\n"
          "  for word in \"${COMP_WORDS[@]:1:COMP_CWORD-1}\"; do\n"
          "    case $word in\n"
          "      %3) command=$word; break ;;\n"
          "    esac\n"
          "  done\n"
          "  case $prev in\n")
          .arg(book.program, quoted(namesOf(book.commonOptions)), commands.join(u'|'));
  text += bashOptionValues(book.commonOptions, QStringLiteral("    "));
  text += QStringLiteral("  esac\n  case $command in\n");
  for (const CommandEntry &command : book.commands) {
    text += QStringLiteral("    %1)\n").arg(command.name);
    const QString values = bashOptionValues(command.options, QStringLiteral("        "));
    if (!values.isEmpty())
      text += QStringLiteral("      case $prev in\n") + values + QStringLiteral("      esac\n");
    text += QStringLiteral(
                "      if [[ $cur == -* ]]; then\n"
                "        mapfile -t COMPREPLY < <(compgen -W \"$common %1\" -- \"$cur\")\n")
                .arg(namesOf(command.options));
    if (const OptionEntry *operand = operandOf(command)) {
      text += QStringLiteral("      else\n        ") + bashValue(operand->value) + u'\n';
    }
    text += QStringLiteral("      fi ;;\n");
  }
  text += QStringLiteral(
              "    *) mapfile -t COMPREPLY < <(compgen -W \"$common %1\" -- \"$cur\") ;;\n"
              "  esac\n"
              "}\n"
              "complete -F _%2 %2\n")
              .arg(commands.join(u' '), book.program);
  return text;
}

QString zshCompletion(const CommandBook &book) {
  QString text =
      QStringLiteral(
          "#compdef %1\n"
          "# Completion of %1 for zsh; made by \"%1 --generate zsh\".\n"
          "# Offers those of the names that are not on the line yet: _tavrilctl_left SUFFIX NAME...\n"
          "_tavrilctl_left() {\n"
          "  local suffix=$1\n"
          "  shift\n"
          "  local -a used=(${words[1,CURRENT-1]%%=*}) names=($@)\n"
          "  local -a left=(${names:|used})\n"
          "  compadd -S \"$suffix\" -- $left\n"
          "}\n"
          "_tavrilctl_ports() {\n"
          "  compadd -- ${(f)\"$(%1 ports --names 2>/dev/null)\"}\n"
          "  _files -W / -g \"dev/tty*\"\n"
          "}\n"
          "_%1() {\n"
          "  local context state state_descr line\n"
          "  typeset -A opt_args\n"
          "  local -a commands common\n"
          "  commands=(\n")
          .arg(book.program);
  for (const CommandEntry &command : book.commands) {
    text += QStringLiteral("    %1\n").arg(quoted(command.name + u':' + zshText(command.description)));
  }
  text += QStringLiteral("  )\n  common=(\n");
  for (const QString &spec : zshSpecs(book.commonOptions)) text += QStringLiteral("    %1\n").arg(spec);
  text += QStringLiteral(
      "  )\n"
      "  _arguments -C \"${common[@]}\" '1: :->command' '*:: :->operands'\n"
      "  case $state in\n"
      "    command) _describe command commands ;;\n"
      "    operands)\n"
      "      case $line[1] in\n");
  for (const CommandEntry &command : book.commands) {
    text += QStringLiteral("        %1) _arguments \"${common[@]}\"").arg(command.name);
    for (const QString &spec : zshSpecs(command.options)) {
      // Every command has the help option too, which stands among the common ones already.
      if (!spec.startsWith(u"'-h[") && !spec.startsWith(u"'--help["))
        text += QStringLiteral(" \\\n          ") + spec;
    }
    text += QStringLiteral(" ;;\n");
  }
  text += QStringLiteral(
              "      esac ;;\n"
              "  esac\n"
              "}\n"
              "_%1 \"$@\"\n")
              .arg(book.program);
  return text;
}

QString fishCompletion(const CommandBook &book) {
  QString text =
      QStringLiteral(
          "# Completion of %1 for fish; made by \"%1 --generate fish\".\n"
          "# Offers those of the names that are not on the line yet: __tavrilctl_left SUFFIX NAME...\n"
          "function __tavrilctl_left\n"
          "  set -l used (commandline -opc | string replace -r '=.*' '')\n"
          "  for name in $argv[2..-1]\n"
          "    contains -- $name $used; or echo $name$argv[1]\n"
          "  end\n"
          "end\n")
          .arg(book.program);
  const QString complete = QStringLiteral("complete -c %1").arg(book.program);
  text += complete + QStringLiteral(" -f\n");
  for (const OptionEntry &option : book.commonOptions) text += complete + fishOption(option) + u'\n';
  for (const CommandEntry &command : book.commands) {
    text += complete + QStringLiteral(" -n __fish_use_subcommand -f -a %1 -d %2\n")
                           .arg(command.name, quoted(command.description));
    const QString within =
        complete + QStringLiteral(" -n '__fish_seen_subcommand_from %1'").arg(command.name);
    for (const OptionEntry &option : command.options) {
      if (option.names.contains(QStringLiteral("--help"))) continue;
      text += within + (option.isOperand() ? fishOperand(option.value) : fishOption(option)) + u'\n';
    }
  }
  return text;
}

Candidates candidatesFor(const CommandBook &book, const QStringList &before, const QString &beginning) {
  Candidates candidates;
  QStringList all;
  if (before.isEmpty()) {
    for (const CommandEntry &command : book.commands) {
      if (isForSessions(command.which)) all.append(command.name);
    }
    all += {QStringLiteral("exit"), QStringLiteral("help")};
  } else {
    const auto command = std::ranges::find(book.commands, before.front(), &CommandEntry::name);
    if (command == book.commands.end()) return candidates;
    const auto option = std::ranges::find_if(command->options, [&](const OptionEntry &entry) {
      return !entry.value.isEmpty() && entry.names.contains(before.back());
    });
    const OptionEntry *operand = operandOf(*command);
    if (option != command->options.end()) operand = &*option;
    if (beginning.startsWith(u'-')) {
      all = namesOf(command->options).split(u' ');
    } else if (operand) {
      const ValueKind kind = kindOf(operand->value);
      candidates.files = kind == ValueKind::File;
      candidates.isOpen = kind == ValueKind::Assignment;
      if (kind == ValueKind::Register) all = registerNames().split(u' ');
      if (kind == ValueKind::Setting || kind == ValueKind::Assignment) all = settingNames().split(u' ');
      QStringList used;
      for (const QString &word : before) used.append(word.section(u'=', 0, 0));
      all.removeIf([&](const QString &name) { return used.contains(name); });
      if (candidates.isOpen)
        all.replaceInStrings(QRegularExpression(QStringLiteral("$")), QStringLiteral("="));
    }
  }
  for (const QString &word : all) {
    if (word.startsWith(beginning)) candidates.words.append(word);
  }
  return candidates;
}

}  // namespace tavril::cli
