#include "Commands.h"
#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/MetaMetadata/BinaryLoader.h"
#include "MXF/SDK/MetaMetadata/Dictionary.h"
#include "MXF/SDK/Metadata/PartitionMetadata.h"
#include "MXF/SDK/Platform/Platform.h"
#include "MetadataPrinter.h"
#include "ObjectDirectory.h"
#include "PartitionsWalk.h"

#include <charconv>
#include <optional>
#include <ostream>

namespace Halvorn::Inspect
{

using namespace MXF::SDK;
using Packs::PartitionPack;
using Platform::UInt64;

namespace
{

struct Arguments
{
    std::string file;
    std::string partition = "header";
    std::string dictionary = HALVORN_DICTIONARY_FILE;
    bool meta = false;
};

std::optional<Arguments> parse(const std::vector<std::string>& args)
{
    Arguments parsed;
    bool haveFile = false;
    for (std::size_t i = 0; i < args.size(); ++i)
    {
        const std::string& arg = args[i];
        const bool option = arg == "--partition" || arg == "--dictionary";
        if (arg == "--meta")
            parsed.meta = true;
        else if (option && i + 1 < args.size())
            (arg == "--partition" ? parsed.partition : parsed.dictionary) = args[++i];
        else if (option || haveFile || (arg.size() > 1 && arg[0] == '-'))
            return std::nullopt;
        else
        {
            parsed.file = arg;
            haveFile = true;
        }
    }
    if (!haveFile)
        return std::nullopt;
    return parsed;
}

std::optional<UInt64> offset(const std::string& text)
{
    UInt64 value = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (text.empty() || error != std::errc() || stop != end)
        return std::nullopt;
    return value;
}

// The pack that `which` names: the first header, the last footer, or the one at an offset.
const FoundPartition* choose(const std::vector<FoundPartition>& packs, const std::string& which,
                             std::optional<UInt64> at)
{
    const FoundPartition* chosen = nullptr;
    for (const FoundPartition& found : packs)
    {
        const PartitionPack::PartitionKind kind = found.pack.partitionKind();
        if (at ? found.offset == *at
               : (which == "header" && kind == PartitionPack::HEADER_PARTITION && !chosen) ||
                     (which == "footer" && kind == PartitionPack::FOOTER_PARTITION))
            chosen = &found;
    }
    return chosen;
}

} // namespace

int metadataCommand(const std::vector<std::string>& args, std::ostream& out, std::ostream& err)
{
    const std::optional<Arguments> parsed = parse(args);
    const std::optional<UInt64> at = parsed ? offset(parsed->partition) : std::nullopt;
    if (!parsed || (!at && parsed->partition != "header" && parsed->partition != "footer"))
    {
        err << "usage: mxf-inspect " << METADATA_USAGE << "\n";
        return FAILED;
    }
    const std::string& path = parsed->file;
    const auto file = openFile(path, err);
    if (!file)
        return FAILED;

    MetaMetadata::Dictionary dictionary;
    try
    {
        MetaMetadata::BinaryLoader::load(Platform::fromUtf8(parsed->dictionary), dictionary);
    }
    catch (const Exceptions::BaseException& e)
    {
        return fileFailure(parsed->dictionary, e.what(), err);
    }

    // Damage elsewhere in the file is the partitions subcommand's business, not this one's.
    const PartitionsWalkResult partitions = findPartitions(*file);
    if (partitions.failed)
        return walkStatus(path, partitions.damage, true, err);
    const FoundPartition* found = choose(partitions.packs, parsed->partition, at);
    if (!found)
    {
        if (at)
        {
            err << "mxf-inspect: " << path << ": no partition pack at " << *at << "\n";
            return FAILED;
        }
        return walkStatus(path, "no " + parsed->partition + " partition", partitions.packs.empty(),
                          err);
    }
    const std::string partition =
        std::string(kindName(found->pack)) + " partition at " + std::to_string(found->offset);
    const UInt64 headerByteCount = found->pack.headerByteCount().value();
    if (headerByteCount == 0)
        return walkStatus(path, "the " + partition + " has no header metadata (HeaderByteCount 0)",
                          false, err);

    Metadata::PartitionMetadata metadata(dictionary);
    try
    {
        file->seek(found->end);
        metadata.read(*file, headerByteCount);
    }
    catch (const Exceptions::BaseException& e)
    {
        // A failing source is no fault of the file.
        const bool failed = dynamic_cast<const Exceptions::IOError*>(&e) != nullptr;
        return walkStatus(path, "header metadata of the " + partition + ": " + e.what(), failed,
                          err);
    }
    MetadataPrintOptions options;
    options.meta = parsed->meta;
    file->seek(found->end);
    const std::optional<ObjectDirectoryCheck> directory =
        checkObjectDirectory(*file, found->offset, file->position() + headerByteCount);
    if (directory)
        options.objectDirectory = directory->text;
    out << "header metadata of the " << partition << ": HeaderByteCount " << headerByteCount << ", "
        << metadata.partitionDictionary().primerPack().size() << " primer entries\n";
    const MetadataPrintResult result = printMetadata(metadata, out, options);
    out << result.sets << " sets\n";
    out.flush();
    const std::string damage =
        directory && !directory->damage.empty()
            ? (result.damage.empty() ? directory->damage : result.damage + "; " + directory->damage)
            : result.damage;
    return walkStatus(path, damage, false, err);
}

} // namespace Halvorn::Inspect
