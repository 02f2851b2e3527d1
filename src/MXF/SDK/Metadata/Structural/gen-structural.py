#!/usr/bin/env python3
"""Writes the property accessors of the structural set classes from the dictionary source.

    gen-structural.py HEADER SOURCE DICTIONARY.txt...

The dictionary files are read in the order given (that of data/CMakeLists.txt), as the
dictionary compiler reads them. Each class of CLASSES gets an accessor for every property that
its dictionary set holds (inherited and extended ones included) and its C++ base class doesn't:
the sets between two classes (Segment, SourceReference, CommentMarker...) have no class of their
own, so their properties land in the first class below them.

HEADER gets one macro a class, MXF_SDK_STRUCTURAL_ACCESSORS_<Class>, with the declarations that
the class's hand-written header puts in its body; SOURCE gets the out-of-line definitions and the
classKey() of every class. Each accessor is a one-line call of a helper in
StructuralSupport.h, so the generated code is small and holds no templates of its own.

Naming of the accessors, from the dictionary's element name:
  - a qualified name (Set.Name) drops the set; RENAMES then has the last word;
  - lower camel case: a leading run of capitals is lowered but for its last letter when a small
    letter follows (URLString -> urlString, DMSchemes -> dmSchemes), "_" joins words
    (APP_VTRErrorCount -> appVTRErrorCount);
  - a value or a reference: `name()` gives it (null when empty), `name(value)` sets it (a
    reference setter given null clears it, with `force` also when the attribute is required);
  - a collection: `namesCount()`, `name(index)`, `addName(item)`, `removeName(index)`, where the
    item's name is the collection's without its final "s" (packages -> package, DMSchemes ->
    dmScheme and addDMScheme); a name without one is its own item name (videoLineMap(index));
    `force` passes the collection's bounds, as with Element's setters.
The script stops with a message when two accessors of a class and its bases would share a name,
or a type has no class.
"""

import re
import sys

# C++ class, dictionary set, C++ base: the class tree of the toolkit.
CLASSES = [
    ("TrackableMetadataSet", "InterchangeObject", None),
    ("Identification", "Identification", None),
    ("Preface", "Preface", "TrackableMetadataSet"),
    ("ContentStorage", "ContentStorage", "TrackableMetadataSet"),
    ("EssenceContainerData", "EssenceContainerData", "TrackableMetadataSet"),
    ("GenericPackage", "GenericPackage", "TrackableMetadataSet"),
    ("MaterialPackage", "MaterialPackage", "GenericPackage"),
    ("SourcePackage", "SourcePackage", "GenericPackage"),
    ("Track", "Track", "TrackableMetadataSet"),
    ("TimelineTrack", "TimelineTrack", "Track"),
    ("EventTrack", "EventTrack", "Track"),
    ("StaticTrack", "StaticTrack", "Track"),
    ("Sequence", "Sequence", "TrackableMetadataSet"),
    ("StructuralComponent", "StructuralComponent", "TrackableMetadataSet"),
    ("SourceClip", "SourceClip", "StructuralComponent"),
    ("DMSourceClip", "DMSourceClip", "SourceClip"),
    ("DMSegment", "DMSegment", "StructuralComponent"),
    ("TimecodeComponent", "TimecodeComponent", "StructuralComponent"),
    ("Locator", "Locator", "TrackableMetadataSet"),
    ("NetworkLocator", "NetworkLocator", "Locator"),
    ("TextLocator", "TextLocator", "Locator"),
    ("SubDescriptor", "SubDescriptor", "TrackableMetadataSet"),
    ("JPEG2000PictureSubDescriptor", "JPEG2000PictureSubDescriptor", "SubDescriptor"),
    ("GenericDescriptor", "GenericDescriptor", "TrackableMetadataSet"),
    ("PhysicalDescriptor", "PhysicalDescriptor", "GenericDescriptor"),
    ("WAVEAudioPhysicalDescriptor", "WAVEAudioPhysicalDescriptor", "PhysicalDescriptor"),
    ("FileDescriptor", "FileDescriptor", "GenericDescriptor"),
    ("MultipleDescriptor", "MultipleDescriptor", "FileDescriptor"),
    ("SMPTE331MTimeDateItemDescriptor", "SMPTE331MTimeDateItemDescriptor", "FileDescriptor"),
    ("GenericDataEssenceDescriptor", "GenericDataEssenceDescriptor", "FileDescriptor"),
    ("ANCPacketsDescriptor", "ANCPacketsDescriptor", "GenericDataEssenceDescriptor"),
    ("VBIDataDescriptor", "VBIDataDescriptor", "GenericDataEssenceDescriptor"),
    ("GenericPictureEssenceDescriptor", "GenericPictureEssenceDescriptor", "FileDescriptor"),
    ("CDCIEssenceDescriptor", "CDCIEssenceDescriptor", "GenericPictureEssenceDescriptor"),
    ("MPEG2VideoDescriptor", "MPEG2VideoDescriptor", "CDCIEssenceDescriptor"),
    ("RGBAEssenceDescriptor", "RGBAEssenceDescriptor", "GenericPictureEssenceDescriptor"),
    ("GenericSoundEssenceDescriptor", "GenericSoundEssenceDescriptor", "FileDescriptor"),
    ("WAVEAudioEssenceDescriptor", "WAVEAudioEssenceDescriptor", "GenericSoundEssenceDescriptor"),
    ("AES3AudioEssenceDescriptor", "AES3AudioEssenceDescriptor", "WAVEAudioEssenceDescriptor"),
    ("UnknownChunkSet", "UnknownChunkSet", "TrackableMetadataSet"),
]

# Dictionary element name -> the name its accessors are built from, each with its reason.
RENAMES = {
    "StructuralComponents": "Components",  # a sequence's components(i), as callers say it
    "SubDescriptorUIDs": "FileDescriptors",  # GenericDescriptor already has subDescriptor(i)
    "ApplicationPluginBatch": "ApplicationPlugins",  # the batch is the collection, not an item
    # Avid's properties of the CDCI descriptor, beside the MPEG-2 descriptor's own of that name.
    "CDCIEssenceDescriptor.ProfileAndLevel": "AvidProfileAndLevel",
    "CDCIEssenceDescriptor.MaxGOP": "AvidMaxGOP",
    "CDCIEssenceDescriptor.BitRate": "AvidBitRate",
}

# Properties left to MetadataSet: the InstanceUID is its `instanceUID()`, and the owner's index
# is keyed by it, so no setter.
SKIPPED = {"InstanceUID"}

# A reference whose target the dictionary states more widely than MXF files use it: a track's
# Segment is a Sequence in SMPTE 377M.
TARGETS = {"Sequence": "Sequence"}

# Dictionary type name -> value class of MXF::SDK::Types.
TYPES = {
    "Boolean": "Boolean",
    "DataStream": "DataStream",
    "DataValue": "DataValue",
    "Int8": "Int8",
    "Int16": "Int16",
    "Int32": "Int32",
    "Int64": "Int64",
    "ISO7bitCharString": "ISO7String",
    "J2KCodingStyleDefault": "J2KCodingStyleDefault",
    "J2KPictureComponent": "J2KPictureComponent",
    "J2KPictureComponentType": "J2KPictureComponent",
    "J2KQuantisationDefault": "J2KQuantisationDefault",
    "Length": "Length",
    "LocalTag": "LocalTag",
    "Orientation": "Orientation",
    "Position": "Position",
    "ProductVersionType": "ProductVersion",
    "Rational": "Rational",
    "RGBALayout": "RGBALayout",
    "SignalStandard": "SignalStandard",
    "TimestampType": "Timestamp",
    "UInt8": "UInt8",
    "UInt16": "UInt16",
    "UInt32": "UInt32",
    "UInt64": "UInt64",
    "UL": "UniversalLabel",
    "UMID32": "UMID32",
    "UMID64": "UMID64",
    "UTF16": "UTF16",
    "UTF16CharString": "UTF16String",
    "UUID": "UUID",
    "VersionType": "VersionType",
}

# Members of MetadataSet that an accessor must not hide.
RESERVED = {
    "accept", "key", "metaMetadataSet", "owner", "lengthSize", "setLengthSize", "read",
    "element", "findElement", "elements", "invalidElements", "addInvalidElement",
    "removeInvalidElement", "value", "setValue", "referencedSet", "instanceUID", "valueSize",
    "size", "serialize", "classKey",
}
CPP_KEYWORDS = {"default", "delete", "register", "class", "new", "operator", "template", "union"}


class Fault(Exception):
    pass


class Element:
    def __init__(self, name, label, words, where):
        self.name, self.label, self.where = name, label, where
        self.kind, self.type, self.targets = parse_type(words, where)


def parse_type(words, where):
    """(kind, value type, reference targets) of an element's type words."""
    if words[0] in ("StrongReference", "WeakReference"):
        return "reference", words[0], targets_of(words[1:], where)
    if words[0] in ("Array", "Batch"):
        rest = words[1:]
        if rest and re.fullmatch(r"\d+\.\.(\d+|\*)", rest[0]):
            rest = rest[1:]
        if len(rest) < 2 or rest[0] != "of":
            raise Fault(f"{where}: bad collection type {' '.join(words)}")
        if rest[1] in ("StrongReference", "WeakReference"):
            return "references", rest[1], targets_of(rest[2:], where)
        return "values", rest[1], None
    if len(words) != 1:
        raise Fault(f"{where}: bad type {' '.join(words)}")
    return "value", words[0], None


def targets_of(words, where):
    if not words or words[0] != "to" or len(words) < 2:
        raise Fault(f"{where}: a reference needs 'to SET...'")
    return [] if words[1:] == ["any"] else words[1:]


def label_bytes(text, where):
    parts = text.split(".")
    if len(parts) != 16 or not all(re.fullmatch(r"[0-9a-fA-F]{2}", p) for p in parts):
        raise Fault(f"{where}: bad label {text}")
    return [int(p, 16) for p in parts]


def read_dictionary(paths):
    """Elements by name; sets by name as (key, parent, [element names]); extends by set."""
    elements, sets, extends = {}, {}, {}
    for path in paths:
        statement = None
        with open(path, encoding="utf-8") as f:
            for number, raw in enumerate(f, 1):
                where = f"{path}:{number}"
                line = raw.split("#", 1)[0].rstrip()
                if not line:
                    continue
                words = line.split()
                if not line[0].isspace():
                    statement = None
                    if words[0] == "element":
                        elements[words[1]] = Element(words[1], label_bytes(words[2], where),
                                                     words[3:], where)
                    elif words[0] == "set":
                        parent = words[4] if len(words) > 4 and words[3] == ":" else None
                        statement = sets[words[1]] = (label_bytes(words[2], where), parent, [])
                    elif words[0] == "extend":
                        statement = (None, None, extends.setdefault(words[1], []))
                    else:
                        raise Fault(f"{where}: unknown statement {words[0]}")
                elif words[0] == "value":
                    continue  # enumerations don't change the accessor
                elif statement is not None:
                    if len(words) > 3:  # an attribute with an element of its own
                        elements[words[0]] = Element(words[0], label_bytes(words[3], where),
                                                     words[4:], where)
                    statement[2].append(words[0])
                else:
                    raise Fault(f"{where}: indented line outside a set")
    return elements, sets, extends


def flattened(name, sets, extends):
    """Every attribute of a set: its parent's first, then its own, then the extends."""
    if name not in sets:
        raise Fault(f"no set {name} in the dictionary")
    _, parent, own = sets[name]
    names = flattened(parent, sets, extends) if parent else []
    for attribute in own + extends.get(name, []):
        if attribute not in names:
            names.append(attribute)
    return names


def ancestors(name, sets):
    while name:
        yield name
        name = sets[name][1]


def lower_camel(name):
    words = [w for w in name.split("_") if w]
    first = words[0]
    run = len(first) - len(first.lstrip("ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789"))
    if run == len(first):
        first = first.lower()
    elif run > 1:
        first = first[: run - 1].lower() + first[run - 1 :]
    else:
        first = first[0].lower() + first[1:]
    return first + "".join(words[1:])


def singular(name):
    return name[:-1] if name.endswith("s") and not name.endswith("ss") else name


class Accessor:
    """The functions of one property in one class."""

    def __init__(self, element, class_of_set, sets):
        self.element = element
        base = RENAMES.get(element.name, element.name.split(".")[-1])
        self.name = lower_camel(base)
        self.label = "LABEL_" + element.name.replace(".", "_")
        if element.kind in ("reference", "references"):
            self.cls = TARGETS.get(element.name) or target_class(element.targets, class_of_set,
                                                                 sets)
        else:
            if element.type not in TYPES:
                raise Fault(f"{element.where}: type {element.type} has no class in Types")
            self.cls = "Types::" + TYPES[element.type]
        self.item = singular(self.name)
        self.Item = singular(base.split(".")[-1].replace("_", ""))  # as it is in add/remove

    def names(self):
        if self.element.kind in ("value", "reference"):
            return [self.name]
        return [self.name + "Count", self.item, "add" + self.Item, "remove" + self.Item]

    def comment(self):
        e = self.element
        what = {"value": e.type, "reference": f"{e.type} to {self.cls}",
                "values": f"collection of {e.type}",
                "references": f"collection of {e.type} to {self.cls}"}[e.kind]
        return f"{e.name}: {what}"

    def declarations(self):
        c, n = self.cls, self.name
        if self.element.kind == "value":
            return [f"const {c}* {n}() const;", f"void {n}(const {c}& value);"]
        if self.element.kind == "reference":
            return [f"{c}* {n}() const;", f"void {n}({c}* target, bool force = false);"]
        count, item, add, remove = self.names()
        if self.element.kind == "values":
            return [f"Platform::UInt32 {count}() const;",
                    f"const {c}* {item}(Platform::UInt32 index) const;",
                    f"void {add}(const {c}& item, bool force = false);",
                    f"void {remove}(Platform::UInt32 index, bool force = false);"]
        return [f"Platform::UInt32 {count}() const;",
                f"{c}* {item}(Platform::UInt32 index) const;",
                f"void {add}({c}& target, bool force = false);",
                f"void {remove}(Platform::UInt32 index, bool force = false);"]

    def definitions(self, owner):
        c, n, lab = self.cls, self.name, self.label
        kind = self.element.kind
        if kind == "value":
            return [f"const {c}* {owner}::{n}() const {{ return valueAs<{c}>(*this, {lab}); }}",
                    f"void {owner}::{n}(const {c}& value) {{ setSimple(*this, {lab}, value); }}"]
        if kind == "reference":
            return [f"{c}* {owner}::{n}() const {{ return targetAs<{c}>(*this, {lab}); }}",
                    f"void {owner}::{n}({c}* target, bool force) "
                    f"{{ setTarget(*this, {lab}, target, force); }}"]
        count, item, add, remove = self.names()
        lines = [f"Platform::UInt32 {owner}::{count}() const {{ return itemCount(*this, {lab}); }}"]
        if kind == "values":
            lines += [f"const {c}* {owner}::{item}(Platform::UInt32 index) const "
                      f"{{ return itemAs<{c}>(*this, {lab}, index); }}",
                      f"void {owner}::{add}(const {c}& item, bool force) "
                      f"{{ addItem(*this, {lab}, item, force); }}",
                      f"void {owner}::{remove}(Platform::UInt32 index, bool force) "
                      f"{{ removeItem(*this, {lab}, index, force); }}"]
        else:
            lines += [f"{c}* {owner}::{item}(Platform::UInt32 index) const "
                      f"{{ return itemTargetAs<{c}>(*this, {lab}, index); }}",
                      f"void {owner}::{add}({c}& target, bool force) "
                      f"{{ addTarget(*this, {lab}, target, force); }}",
                      f"void {owner}::{remove}(Platform::UInt32 index, bool force) "
                      f"{{ removeTarget(*this, {lab}, index, force); }}"]
        return lines


def target_class(targets, class_of_set, sets):
    """The nearest class that holds every target set; MetadataSet for "to any"."""
    if not targets:
        return "MetadataSet"
    chains = [[class_of_set[s] for s in ancestors(t, sets) if s in class_of_set] for t in targets]
    for cls in chains[0]:
        if all(cls in chain for chain in chains[1:]):
            return cls
    return "MetadataSet"


def build(elements, sets, extends):
    class_of_set = {dset: cls for cls, dset, _ in CLASSES}
    dict_of_class = {cls: dset for cls, dset, _ in CLASSES}
    base_of = {cls: base for cls, _, base in CLASSES}
    accessors = {}
    for cls, dset, base in CLASSES:
        inherited = set(flattened(dict_of_class[base], sets, extends)) if base else set()
        own = [a for a in flattened(dset, sets, extends) if a not in inherited and a not in SKIPPED]
        for a in own:
            if a not in elements:
                raise Fault(f"set {dset}: no element {a}")
        accessors[cls] = [Accessor(elements[a], class_of_set, sets) for a in own]
    # Names must be unique along each line of descent and leave MetadataSet's members alone.
    for cls, _, _ in CLASSES:
        seen = {}
        line = cls
        while line:
            for accessor in accessors[line]:
                for name in accessor.names():
                    if name in RESERVED or name in CPP_KEYWORDS:
                        raise Fault(f"{line}::{name} ({accessor.element.name}) is reserved")
                    if name in seen and seen[name] != accessor:
                        raise Fault(f"{line}::{name} ({accessor.element.name}) clashes with "
                                    f"{seen[name].element.name}: add a rename")
                    seen[name] = accessor
            line = base_of[line]
    return accessors


def header_text(accessors, type_classes):
    out = ["// Generated by gen-structural.py from the dictionary source: do not edit.",
           "#pragma once", "",
           '#include "MXF/SDK/Platform/Types.h"']
    out += [f'#include "MXF/SDK/Types/{h}"' for h in sorted(type_headers(type_classes))]
    out.append("")
    for cls, _, _ in CLASSES:
        out.append(f"// {cls}: its own properties; the inherited ones are its base class's.")
        body = []
        for accessor in accessors[cls]:
            body.append(f"/* {accessor.comment()} */")
            body += accessor.declarations()
        if not body:
            body = ["/* none of its own */"]
        out.append(f"#define MXF_SDK_STRUCTURAL_ACCESSORS_{cls} \\")
        out += [f"    {line} \\" for line in body[:-1]]
        out.append(f"    {body[-1]}")
        out.append("")
    return "\n".join(out)


def source_text(accessors, elements, sets):
    out = ["// Generated by gen-structural.py from the dictionary source: do not edit.",
           '#include "MXF/SDK/Metadata/Structural/Structural.h"',
           '#include "StructuralSupport.h"', "",
           "namespace MXF::SDK::Metadata::Structural", "{", "", "namespace", "{", "",
           "using Platform::Byte;", ""]
    used = sorted({a.element.name for lst in accessors.values() for a in lst})
    for name in used:
        out.append(f"constexpr Byte LABEL_{name.replace('.', '_')}[16] = "
                   f"{{{', '.join(f'0x{b:02x}' for b in elements[name].label)}}};")
    out += ["", "} // namespace", ""]
    for cls, dset, _ in CLASSES:
        key = ", ".join(f"0x{b:02x}" for b in sets[dset][0])
        out.append(f"// {cls}: the dictionary's {dset}")
        out.append(f"KLV::Key {cls}::classKey()")
        out.append("{")
        out.append(f"    constexpr Byte KEY[16] = {{{key}}};")
        out.append("    return KLV::Key(KEY);")
        out.append("}")
        for accessor in accessors[cls]:
            out += accessor.definitions(cls)
        out.append("")
    out += ["} // namespace MXF::SDK::Metadata::Structural", ""]
    return "\n".join(out)


def type_headers(type_classes):
    where = {"Boolean": "Boolean.h", "Rational": "Rational.h", "Timestamp": "Timestamp.h",
             "RGBALayout": "RGBALayout.h", "LocalTag": "LocalTag.h",
             "DataStream": "OpaqueTypes.h", "DataValue": "OpaqueTypes.h",
             "ISO7String": "Strings.h", "UTF16": "Strings.h", "UTF16String": "Strings.h",
             "VersionType": "VersionTypes.h", "ProductVersion": "VersionTypes.h",
             "UniversalLabel": "UID.h", "UUID": "UID.h", "UMID32": "UID.h", "UMID64": "UID.h",
             "J2KPictureComponent": "J2KTypes.h", "J2KCodingStyleDefault": "J2KTypes.h",
             "J2KQuantisationDefault": "J2KTypes.h"}
    return {where.get(t, "Integers.h") for t in type_classes}


def write_if_changed(path, text):
    try:
        with open(path, encoding="utf-8") as f:
            if f.read() == text:
                return
    except OSError:
        pass
    with open(path, "w", encoding="utf-8") as f:
        f.write(text)


def main(argv):
    if len(argv) < 4:
        sys.stderr.write(__doc__)
        return 2
    try:
        elements, sets, extends = read_dictionary(argv[3:])
        accessors = build(elements, sets, extends)
    except Fault as fault:
        sys.stderr.write(f"gen-structural: {fault}\n")
        return 1
    type_classes = {a.cls[len("Types::"):] for lst in accessors.values() for a in lst
                    if a.cls.startswith("Types::")}
    write_if_changed(argv[1], header_text(accessors, type_classes))
    write_if_changed(argv[2], source_text(accessors, elements, sets))
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
