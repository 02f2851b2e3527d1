#pragma once

#include "MXF/SDK/Metadata/PartitionMetadata.h"

#include <iosfwd>
#include <string>

namespace Halvorn::Inspect
{

struct MetadataPrintResult
{
    // Sets printed, each once.
    MXF::SDK::Platform::UInt64 sets = 0;
    // What is wrong with the metadata, on one line; empty when nothing is.
    std::string damage;
};

struct MetadataPrintOptions
{
    // The whole meta-dictionary, set by set; else a line per class.
    bool meta = false;
    // What was found of Avid's object directory, shown for the root's ObjectDirectory.
    std::string objectDirectory;
};

// Writes the sets of `metadata` as a tree, two spaces of indent a level, from Avid's root object
// if there is one, else from the Preface:
//   SET:      [NAME: ]CLASS {INSTANCEUID}        then its properties one level in
//   property: NAME: VALUE
//   weak:     NAME: -> CLASS {UUID}              or "-> missing {UUID}"
//   list:     NAME: N items                      then "[I] VALUE" (or a set) one level in;
//             NAME: [V, V, ...]                  for short plain values
//   dark:     unknown set KEY, N bytes {UUID}    a set the dictionary doesn't know
//             unknown property LABEL, tag T, N bytes
//             misplaced NAME LABEL, tag T, N bytes: VALUE    known, but not in this set
//             unparsed NAME LABEL, tag T, N bytes: VALUE     this set's, but its value didn't parse
// Classes and properties by their dictionary names; labels in dotted hex with their register
// name where known; rationals as 25/1, timestamps as 2011-03-04T05:06:07.008Z, UUIDs and UMIDs in
// their text forms; strong references nested, weak ones by target, meta definitions with their
// names ("ClassDefinition "Sequence" {UUID}"). A set strongly referred to twice is written once,
// later mentions are "NAME: => CLASS {UUID}"; one nested 64 levels deep is "NAME: => CLASS {UUID}
// (continued below)" and starts a tree of its own after "continued from above:". Sets the tree
// doesn't reach follow "not reached from the Preface:" (or "from the root object:").
// Unless `options.meta`, a MetaDictionary is one line, "NAME: MetaDictionary {UUID}: N classes,
// M types", with a line a class, "ClassDefinition "NAME": parent "PARENT", N properties[,
// abstract]", and one for the types, "TypeDefinitions: N: COUNT KIND, ..."; the dark lines of
// its sets still show, under their class or the types.
// Damage: no single Preface, references with no target. The metadata isn't changed, but writing may
// ask the partition's dictionary for tags.
MetadataPrintResult printMetadata(MXF::SDK::Metadata::PartitionMetadata& metadata,
                                  std::ostream& out, const MetadataPrintOptions& options = {});

} // namespace Halvorn::Inspect
