#pragma once

#include "platform/PlainElement.h"

#include <QString>

#include <map>

namespace tavril {

class ValueStore;

/// The elements of a screen that nobody sees, by their keys.
using PlainScreen = std::map<QString, PlainElement>;

/// Makes an element for each value of a register and for each line that a reply or the link changes, and
/// registers them. The screen must outlive what the store is asked for.
void registerPlainScreen(ValueStore &store, PlainScreen &screen);

}  // namespace tavril
