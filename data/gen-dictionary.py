#!/usr/bin/env python3
"""Writes the dictionary source files of this folder from the reference data.

    data/gen-dictionary.py [REFERENCE_DIR]

REFERENCE_DIR defaults to ../shared/reference beside the repository. It must hold
mxf-dictionary.json, aaf-model.json and rp224-labels.csv (see data/README.md for where those come
from). The text files are what the build compiles; this script is how they were first made, and
it makes them again byte for byte. Every choice that is not a plain copy of the reference data is
in the tables below, with the reason.
"""

import csv
import json
import os
import sys
import textwrap

HERE = os.path.dirname(os.path.abspath(__file__))
DEFAULT_REFERENCE = os.path.join(HERE, "..", "..", "shared", "reference")

INSTANCE_UID = "06.0e.2b.34.01.01.01.01.01.01.15.02.00.00.00.00"
CLASS_DEFINITIONS = "06.0e.2b.34.01.01.01.02.06.01.01.07.07.00.00.00"
TYPE_DEFINITIONS = "06.0e.2b.34.01.01.01.02.06.01.01.07.08.00.00.00"

# Which register classes go into which file. Packs, the partition packs and the primer are not
# local sets and are left out, as are the register's newer essence descriptors that neither XDCAM
# nor Avid files carry.
GROUPS = [
    ("smpte-377-1.txt",
     "SMPTE ST 377-1 (MXF file format): structural metadata, generic descriptors, index table "
     "segment.",
     ["InterchangeObject", "StructuralComponent", "Segment", "Event", "CommentMarker", "Sequence",
      "SourceReference", "SourceClip", "TimecodeComponent", "ContentStorage",
      "EssenceContainerData", "GenericDescriptor", "FileDescriptor",
      "GenericPictureEssenceDescriptor", "CDCIEssenceDescriptor", "RGBAEssenceDescriptor",
      "Preface", "Identification", "Locator", "NetworkLocator", "TextLocator", "GenericPackage",
      "MaterialPackage", "SourcePackage", "Track", "EventTrack", "StaticTrack", "TimelineTrack",
      "DMSegment", "GenericSoundEssenceDescriptor", "GenericDataEssenceDescriptor",
      "MultipleDescriptor", "DMSourceClip", "PhysicalDescriptor", "ImportDescriptor",
      "RecordingDescriptor", "SubDescriptor", "PackageMarker", "ApplicationPlugInObject",
      "ApplicationReferencedObject", "ApplicationObject", "IndexTableSegment"]),
    ("smpte-381-mpeg.txt",
     "SMPTE ST 381 (MPEG mappings): the MPEG-2 video descriptor that XDCAM and D-10 files carry, "
     "with its properties of dynamic tag, and the MPEG audio and MPEG-4 visual descriptors.",
     ["MPEG2VideoDescriptor", "MPEGAudioDescriptor", "MPEG4VisualSubDescriptor"]),
    ("smpte-382-sound.txt",
     "SMPTE ST 382 (AES3 and Broadcast Wave mapping): the sound descriptors of XDCAM, D-10 and "
     "OP-Atom sound files.",
     ["WAVEAudioEssenceDescriptor", "AES3AudioEssenceDescriptor", "WAVEAudioPhysicalDescriptor",
      "RIFFChunk"]),
    ("smpte-descriptors.txt",
     "Further SMPTE descriptors: SMPTE 385M time and date (system item), SMPTE 422M JPEG 2000, "
     "SMPTE ST 436 VBI and ANC data.",
     ["SMPTE331MTimeDateItemDescriptor", "JPEG2000PictureSubDescriptor", "VBIDataDescriptor",
      "ANCPacketsDescriptor"]),
    ("aaf-objects.txt",
     "AAF object model as MXF local sets (SMPTE ST 377-2): the AAF classes of the register that "
     "Avid files carry, the definition objects of the AAF dictionary and the meta-dictionary.",
     ["EdgeCode", "EssenceGroup", "GPITrigger", "Filler", "OperationGroup", "NestedScope",
      "Pulldown", "ScopeReference", "Selector", "TextClip", "HTMLClip", "TimecodeStream",
      "TimecodeStream12M", "Transition", "ControlPoint", "DefinitionObject", "DataDefinition",
      "OperationDefinition", "ParameterDefinition", "PluginDefinition", "CodecDefinition",
      "ContainerDefinition", "InterpolationDefinition", "Dictionary", "AIFCDescriptor",
      "HTMLDescriptor", "TIFFDescriptor", "WAVEDescriptor", "FilmDescriptor", "TapeDescriptor",
      "CompositionPackage", "Parameter", "ConstantValue", "VaryingValue", "TaggedValue",
      "KLVData", "TaggedValueDefinition", "KLVDataDefinition", "AuxiliaryDescriptor",
      "OPDefinition", "CompressionDefinition", "ClassDefinition", "PropertyDefinition",
      "TypeDefinition", "TypeDefinitionInteger", "TypeDefinitionStrongObjectReference",
      "TypeDefinitionWeakObjectReference", "TypeDefinitionEnumeration",
      "TypeDefinitionFixedArray", "TypeDefinitionVariableArray", "TypeDefinitionSet",
      "TypeDefinitionString", "TypeDefinitionStream", "TypeDefinitionRecord",
      "TypeDefinitionRename", "TypeDefinitionExtendibleEnumeration", "TypeDefinitionIndirect",
      "TypeDefinitionOpaque", "TypeDefinitionCharacter", "MetaDefinition", "MetaDictionary",
      "ExtensionScheme", "PropertyAliasDefinition", "ExtendibleEnumerationElement", "Root"]),
]
AVID_FILE = "avid.txt"

# Two lists of conformance labels that newer registers give the Preface (AMWA rules, IMF); no
# XDCAM or Avid file carries them.
SKIP_PROPERTIES = {
    "06.0e.2b.34.01.01.01.01.0d.01.08.01.01.01.00.00",
    "06.0e.2b.34.01.01.01.0e.01.02.02.10.02.04.00.00",
}

# Names of the toolkit's own classes where they differ from the register's.
SET_NAMES = {"RIFFChunk": "UnknownChunkSet"}

# Sets that the register roots outside InterchangeObject and that carry no InstanceUID of their
# own there; Avid writes one (tag 3c0a) in each, and the loader refuses a set without it.
ADD_INSTANCE_UID = {"MetaDictionary"}

# Closed integer enumerations keep their values; the extendible ones (label lists) are open by
# nature, and a Boolean needs no list.
SKIP_ENUMERATIONS = {"Boolean"}

# Register weak references to definitions and meta definitions are written in MXF as the target's
# identification (its AUID), not as an instance identifier.
IDENTIFICATION_TARGETS = {
    "ClassDefinition", "PropertyDefinition", "TypeDefinition", "DataDefinition",
    "ContainerDefinition", "CodecDefinition", "OperationDefinition", "ParameterDefinition",
    "InterpolationDefinition", "PluginDefinition", "TypeDefinitionExtendibleEnumeration",
}

# Within the meta-dictionary, the definitions refer to one another (a class to its parent, a type
# to the types it is made of) by InstanceUID, as Avid writes them: those weak references stay
# references. A property's Type is an AUID in the register, and stays an identification.
META_DEFINITION = "MetaDefinition"

# Register types whose value class in the toolkit has its own name.
REGISTER_SIMPLE = {
    "UInt8": "UInt8", "UInt16": "UInt16", "UInt32": "UInt32", "UInt64": "UInt64",
    "Int8": "Int8", "Int16": "Int16", "Int32": "Int32", "Int64": "Int64",
    "Boolean": "Boolean", "UUID": "UUID", "AUID": "UL", "PackageIDType": "UMID32",
    "TimeStamp": "TimestampType", "VersionType": "VersionType",
    "ProductVersionType": "ProductVersionType", "Rational": "Rational",
    "PositionType": "Position", "LengthType": "Length", "PhaseFrameType": "Int32",
    "JPEGTableIDType": "Int32", "UTF16String": "UTF16CharString", "ISO7": "ISO7bitCharString",
    "Stream": "DataStream", "DataValue": "DataValue", "Indirect": "DataValue",
    "Opaque": "DataValue", "RGBALayout": "RGBALayout", "SignalStandardType": "SignalStandard",
    # A string array is a run of terminated strings, with no batch header.
    "UTF16StringArray": "UTF16CharString",
}

# MXFLib's types carry the MXF wire form where the register only knows the AAF one: batch or
# array header or none, UUID or UL.
MXFLIB_SIMPLE = {
    "UUID": "UUID", "UL": "UL", "AUID": "UL", "PackageID": "UMID32",
    "Timestamp": "TimestampType", "VersionType": "VersionType",
    "ProductVersionType": "ProductVersionType", "Rational": "Rational", "Position": "Position",
    "LengthType": "Length", "UTF16String": "UTF16CharString", "URI": "UTF16CharString",
    "StringArray": "UTF16CharString", "Stream": "DataStream", "DataValue": "DataValue",
    "RGBALayout": "RGBALayout", "Boolean": "Boolean", "UInt8": "UInt8", "UInt16": "UInt16",
    "UInt32": "UInt32", "UInt64": "UInt64", "Int8": "Int8", "Int16": "Int16", "Int32": "Int32",
    "Int64": "Int64", "LayoutType": "UInt8", "LocalTagType": "LocalTag",
    # No batch header on the wire.
    "UInt32Array": "DataValue",
}
MXFLIB_COLLECTIONS = {
    "AUIDSet": ("Batch", "UL"), "AUIDArray": ("Array", "UL"), "UInt32Batch": ("Batch", "UInt32"),
    "Int32Batch": ("Batch", "Int32"), "Int64Batch": ("Batch", "Int64"),
    "ChannelStatusModeTypeBatch": ("Batch", "UInt8"),
    "DeltaEntryArray": ("Array", "DeltaEntryType"),
    "IndexEntryArray": ("Array", "IndexEntryType"),
}

# Properties whose value class the register's type does not name.
PROPERTY_TYPES = {
    "06.0e.2b.34.01.01.01.0a.04.01.06.03.0b.00.00.00": "Array of J2KPictureComponentType",
    "06.0e.2b.34.01.01.01.0a.04.01.06.03.0c.00.00.00": "J2KCodingStyleDefault",
    "06.0e.2b.34.01.01.01.0a.04.01.06.03.0d.00.00.00": "J2KQuantisationDefault",
}

# AAF type names (AAF SDK, pyaaf2, and the names Avid writes into its meta-dictionary).
AAF_TYPES = {
    "aafInt32": "Int32", "Int32": "Int32", "aafUInt32": "UInt32", "UInt32": "UInt32",
    "aafUInt16": "UInt16", "UInt16": "UInt16", "aafInt64": "Int64", "Int64": "Int64",
    "UInt8": "UInt8", "Boolean": "Boolean", "aafString": "UTF16CharString",
    "String": "UTF16CharString", "MobIDType": "UMID32", "Rational": "Rational",
    "RGBColor": "DataValue", "Stream": "DataStream", "AUID": "UL",
    "MPEG4VisualCodedContentType": "UInt8",
    "kAAFTypeID_TaggedValueStrongReferenceVector": "Array of StrongReference to TaggedValue",
    "TaggedValueStrongReferenceVector": "Array of StrongReference to TaggedValue",
    "AvidStrongReference": "StrongReference to any",
}

# Avid's extension properties: those of the meta-dictionary that Avid writes into its MXF files
# (bmx's extraction), EssenceGroupType of bmx's extension data model, and the TaggedValue
# properties that the toolkit's own OP-Atom meta-dictionary lists.
AVID_TAGGED_VALUE_EXTRAS = {"PortableObject", "PortableObjectClassID", "TaggedValue_Stream"}


def fail(message):
    sys.exit("gen-dictionary: " + message)


class Element:
    def __init__(self, name, ul, kind, owner, values=None):
        self.name = name
        self.ul = ul
        self.kind = kind
        self.owner = owner
        self.values = values or []


def element_kind(prop, register_types, set_names, in_meta_definition=False):
    """The value kind of a register property, in the words of the source format."""
    ul = prop["ul"]
    if ul in PROPERTY_TYPES:
        return PROPERTY_TYPES[ul], None
    rtype = prop.get("type")
    info = register_types.get(rtype, {})
    kind = info.get("kind")

    def target(name):
        return set_names.get(name, "any")

    def reference(ref_type):
        ref = register_types[ref_type]
        if ref["kind"] == "StrongReference":
            return "StrongReference to " + target(ref["target_class"])
        if ref["target_class"] in IDENTIFICATION_TARGETS and not in_meta_definition:
            return None
        return "WeakReference to " + target(ref["target_class"])

    if kind in ("StrongReference", "WeakReference"):
        text = reference(rtype)
        if text:
            return text, None
        return "UL", None
    if kind in ("Set", "VariableArray"):
        item = info["base_type"]
        item_kind = register_types.get(item, {}).get("kind")
        if item_kind in ("StrongReference", "WeakReference"):
            collection = "Batch" if kind == "Set" else "Array"
            text = reference(item)
            return collection + " of " + (text or "UL"), None

    if rtype == "SignalStandardType":
        return "SignalStandard", enumeration(info)

    mxflib = prop.get("mxflib_type")
    if mxflib in MXFLIB_SIMPLE:
        simple = MXFLIB_SIMPLE[mxflib]
        values = enumeration(info) if kind == "Enumeration" else None
        return simple, values
    if mxflib in MXFLIB_COLLECTIONS:
        collection, item = MXFLIB_COLLECTIONS[mxflib]
        return collection + " of " + item, None
    if mxflib == "RAWBatch":
        item = info["base_type"]
        item_info = register_types.get(item, {})
        if item_info.get("kind") == "Enumeration":
            return "Batch of " + REGISTER_SIMPLE[item_info["base_type"]], None
        return "Batch of DataValue", None

    if kind == "Integer" or rtype in REGISTER_SIMPLE:
        return REGISTER_SIMPLE[rtype], None
    if kind == "Enumeration":
        base = info["base_type"]
        if base == "AUID":
            return "UL", None
        return REGISTER_SIMPLE[base], enumeration(info)
    if kind == "Rename":
        return REGISTER_SIMPLE[info["base_type"]], None
    if kind in ("Set", "VariableArray"):
        collection = "Batch" if kind == "Set" else "Array"
        item = info["base_type"]
        item_info = register_types.get(item, {})
        if item in REGISTER_SIMPLE and item_info.get("kind") in ("Integer", "Record", "FixedArray"):
            return collection + " of " + REGISTER_SIMPLE[item], None
        if item_info.get("kind") == "Enumeration":
            return collection + " of " + REGISTER_SIMPLE[item_info["base_type"]], None
        return "DataValue", None
    if kind in ("Record", "FixedArray"):
        return "DataValue", None
    fail("no value kind for %s of type %s" % (prop["name"], rtype))


def is_meta_definition(name, classes):
    while name:
        if name == META_DEFINITION:
            return True
        name = classes[name].get("parent")
    return False


def enumeration(info):
    if not info or info.get("kind") != "Enumeration" or info.get("extendible"):
        return None
    if info["symbol"] in SKIP_ENUMERATIONS:
        return None
    return [(v["value"], v["name"]) for v in info["values"]]


def main():
    reference = sys.argv[1] if len(sys.argv) > 1 else DEFAULT_REFERENCE
    mxf = json.load(open(os.path.join(reference, "mxf-dictionary.json")))
    aaf = json.load(open(os.path.join(reference, "aaf-model.json")))
    labels = list(csv.DictReader(open(os.path.join(reference, "rp224-labels.csv"))))

    classes = {c["name"]: c for c in mxf["classes"]}
    register_types = mxf["types"]
    wanted = [name for _, _, names in GROUPS for name in names]
    for name in wanted:
        if name not in classes:
            fail("no class " + name)
    set_names = {name: SET_NAMES.get(name, name) for name in wanted}
    by_key = {classes[name]["set_key"]: set_names[name] for name in wanted}

    # One element per label, named after the first class that declares it.
    elements = {}
    order = []
    for name in wanted:
        in_meta = is_meta_definition(name, classes)
        for prop in classes[name]["properties"]:
            if prop["ul"] in SKIP_PROPERTIES:
                continue
            kind, values = element_kind(prop, register_types, set_names, in_meta)
            ul = prop["ul"]
            if ul in elements:
                if elements[ul].kind != kind:
                    fail("%s: %s here, %s in %s" % (prop["name"], kind, elements[ul].kind,
                                                    elements[ul].owner))
                continue
            elements[ul] = Element(prop["name"], ul, kind, set_names[name], values)
            order.append(ul)

    # The register leaves the MPEG-4 visual sub-descriptor empty; the AAF SDK has its properties.
    aaf_classes = {c["name"]: c for c in aaf["classes"]}
    aaf_types = {t["name"]: t for t in aaf["types"]}
    extra_properties = {}
    for prop in aaf_classes["MPEG4VisualSubDescriptor"]["properties"]:
        kind = AAF_TYPES[prop["type"]]
        values = None
        aaf_type = aaf_types.get(prop["type"])
        if aaf_type and aaf_type["kind"] == "enumeration":
            values = [(m["value"], m["name"]) for m in aaf_type["members"]]
        elements[prop["ul"]] = Element(prop["name"], prop["ul"], kind, "MPEG4VisualSubDescriptor",
                                       values)
        order.append(prop["ul"])
        extra_properties.setdefault("MPEG4VisualSubDescriptor", []).append(
            (prop["ul"], None, "Opt" if prop["optional"] else "Req"))

    # Avid extensions, placed on the set whose key is the AAF class's.
    avid = []
    seen = set()
    avid_dict = aaf["avid_extensions"]["avid_mxf_metadictionary_bmx"]["classes"]
    for cls in avid_dict:
        for prop in cls["properties"]:
            if prop["local_id"] != "0000" or prop["ul"] in seen:
                continue
            avid.append((by_key[cls["ul"]], prop["name"], prop["ul"], prop["type"]))
            seen.add(prop["ul"])
    for cls in aaf["avid_extensions"]["pyaaf2_classes"]:
        if cls["name"] != "TaggedValue":
            continue
        for prop in cls["extension_properties"]:
            if prop["name"] in AVID_TAGGED_VALUE_EXTRAS and prop["ul"] not in seen:
                key = cls["ul"][:15] + "53" + cls["ul"][17:]
                avid.append((by_key[key], prop["name"], prop["ul"], prop["type"]))
                seen.add(prop["ul"])
    for cls in mxf["avid"]["extension_sets_and_properties"]:
        for prop in cls["items"]:
            if prop["local_tag"] == "dynamic" and prop["ul"] not in seen:
                avid.append((cls["name"], prop["name"], prop["ul"], prop["type"]))
                seen.add(prop["ul"])
    avid_elements = []
    for set_name, prop_name, ul, aaf_type in avid:
        if ul in elements:
            fail("Avid property %s is also a register property" % prop_name)
        elements[ul] = Element(prop_name, ul, AAF_TYPES[aaf_type], set_name)
        avid_elements.append(ul)

    # Names: where several labels share a name, the first declared keeps it (SMPTE ST 377-1 comes
    # first, Avid last) and the others are qualified by the set that declares them.
    users = {}
    for ul in order + avid_elements:
        users.setdefault(elements[ul].name, []).append(elements[ul])
    for name, shared in users.items():
        for element in shared[1:]:
            element.name = element.owner + "." + element.name
    if len({e.name for e in elements.values()}) != len(elements):
        fail("element names still collide")

    for file_name, title, names in GROUPS:
        write_group(file_name, title, names, classes, set_names, elements, extra_properties)
    write_avid(labels, avid, elements)


def write_group(file_name, title, names, classes, set_names, elements, extra):
    lines = header(title, [
        "mxf-dictionary.json: SMPTE Metadata Registers (Groups, Elements, Types), snapshot",
        "v000000084, with the SMPTE 377M required status of MXFLib dict.xml.",
    ])
    if file_name == "smpte-381-mpeg.txt":
        lines += ["# The properties of the MPEG-4 visual sub-descriptor come from aaf-model.json "
                  "(AAF SDK 1.2.0):", "# the register snapshot lists none.", ""]
    declared = set()
    for name in sorted(names, key=lambda n: classes[n]["set_key"]):
        cls = classes[name]
        set_name = set_names[name]
        props = [(p["ul"], p["local_tag"], p["status"]) for p in cls["properties"]
                 if p["ul"] not in SKIP_PROPERTIES]
        props += extra.get(name, [])
        if name in ADD_INSTANCE_UID:
            props.insert(0, (INSTANCE_UID, "3c0a", "Req"))
        lines.append("# " + set_name + ("" if set_name == name else " (register: %s)" % name))
        new = [ul for ul, _, _ in props if elements[ul].owner == set_name and ul not in declared]
        lines += element_lines([elements[ul] for ul in new])
        declared.update(new)
        parent = cls.get("parent")
        head = "set %s %s" % (set_name, cls["set_key"])
        if parent and not (name in ADD_INSTANCE_UID):
            head += " : " + set_names[parent]
        lines.append(head)
        lines += attribute_lines([(elements[ul], tag, status) for ul, tag, status in props])
        lines.append("")
    write(file_name, lines)


def write_avid(labels, avid, elements):
    root_key = next(row["ul"] for row in labels if row["symbol"] == "AvidMetadataRoot")
    lines = header("Avid extensions: the root set of Avid's header metadata and the Avid "
                   "properties of standard sets.", [
        "aaf-model.json: the meta-dictionary that Avid writes into its MXF files (as bmx extracted",
        "it), pyaaf2's TaggedValue extensions; mxf-dictionary.json: bmx's Avid extension data",
        "model; rp224-labels.csv: the key of the root set.",
    ])
    lines += [
        "# Avid's root set is the register's Root under a private key, with two items more: the",
        "# object directory (a null UUID and the 64-bit offset of the directory, 24 bytes) under tag",
        "# 0003 and the format version (UInt32) under tag 0004. The static tag table gives those tags",
        "# to the meta-dictionary's ClassDefinitions and TypeDefinitions, so the two attributes bear",
        "# those labels, with elements of their own.",
        "set AvidMetadataRoot %s : Root" % root_key,
        "    ObjectDirectory 0003 Opt %s DataValue" % CLASS_DEFINITIONS,
        "    FormatVersion   0004 Opt %s UInt32" % TYPE_DEFINITIONS,
        "",
        "# Avid's properties have no static tag: each file gives them one in its primer.",
        "",
    ]
    by_set = {}
    for set_name, _, ul, _ in avid:
        by_set.setdefault(set_name, []).append(ul)
    for set_name in sorted(by_set):
        lines += element_lines([elements[ul] for ul in by_set[set_name]])
        lines.append("extend " + set_name)
        lines += attribute_lines([(elements[ul], None, "Opt") for ul in by_set[set_name]])
        lines.append("")
    write(AVID_FILE, lines)


def header(title, sources):
    lines = ["# " + line for line in textwrap.wrap(title, 96)] + ["#", "# Sources (see README.md):"]
    lines += ["#   " + s for s in sources]
    lines += ["# Written by gen-dictionary.py: change the script and run it again rather than this",
              "# file (README.md).", ""]
    return lines


def element_lines(new):
    if not new:
        return []
    width = max(len(e.name) for e in new)
    lines = []
    for e in new:
        lines.append("element %-*s %s %s" % (width, e.name, e.ul, e.kind))
        for value, meaning in e.values or []:
            lines.append("    value %d %s" % (value, meaning))
    return lines


def attribute_lines(attributes):
    width = max(len(e.name) for e, _, _ in attributes) if attributes else 0
    return ["    %-*s %s %s" % (width, e.name, tag or "-", status) for e, tag, status in attributes]


def write(file_name, lines):
    with open(os.path.join(HERE, file_name), "w", newline="\n") as out:
        out.write("\n".join(lines).rstrip("\n") + "\n")


if __name__ == "__main__":
    main()
