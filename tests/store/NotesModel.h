#pragma once

#include "store/ManagedObjectModel.h"

namespace tavril {

/// A model with an attribute of each type, for tests.
inline constexpr const char *notesModelXml = R"(<model name="Notes">
  <entity name="Note">
    <attribute name="title" type="string"/>
    <attribute name="count" type="integer"/>
    <attribute name="weight" type="double"/>
    <attribute name="done" type="boolean"/>
  </entity>
  <entity name="Empty"/>
</model>)";

inline ManagedObjectModel notesModel() {
  Error error;
  return ManagedObjectModel::parse(notesModelXml, error).value();
}

}  // namespace tavril
