#pragma once

#include <QString>

namespace tavril::doctor {

/// The text as one word of a shell's command line, quoted where it has to be: names of devices and users come
/// from elsewhere, and a command that is offered must not do anything but what it says.
QString shellWord(const QString &text);

}  // namespace tavril::doctor
