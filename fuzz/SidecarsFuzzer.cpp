// Any bytes as a sidecar file: through the XML door, from a file and from a string, then through
// the three readers of sidecars: the MediaProfile, the marks of a NonRealTimeMeta document and the
// language file of error texts. Xerces and Xalan come from the system, uninstrumented.
#include "DecodePipes/ClipMetadata.h"
#include "FuzzSupport.h"
#include "Helpers/XMLHandler/Exceptions.h"
#include "Helpers/XMLHandler/XMLHandler.h"
#include "MXF/SDK/Platform/Platform.h"
#include "Transcoder/ErrorMessages.h"

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>

using KEP::Halvorn::ErrorMessages;
using KEP::Halvorn::DecodePipes::ClipMetadata;
using KEP::Quenfold::Helpers::XMLHandler;
using KEP::Quenfold::Helpers::Exceptions::QuenfoldHelpersException;

using Halvorn::Fuzz::require;

namespace
{

// The readers take paths, so each input goes to one file of this process. Never destroyed, so that
// the exit handler can still remove it.
const std::filesystem::path& inputFile()
{
    static const std::filesystem::path* const file = []
    {
        const auto* path =
            new std::filesystem::path(std::filesystem::temp_directory_path() /
                                      ("halvorn-fuzz-sidecar-" + std::to_string(::getpid())));
        std::atexit(
            []
            {
                std::error_code ignored;
                std::filesystem::remove(inputFile(), ignored);
            });
        return path;
    }();
    return *file;
}

void requireMarkText(const std::wstring& text)
{
    require(!text.empty() && text.back() == L'\0');
}

void throughTheDoor(const std::wstring& path, const std::string& bytes)
{
    XMLHandler xml;
    try
    {
        xml.loadFile(path.c_str());
        xml.exists(L"//*[local-name()='Material']/@*[local-name()='umid']");
        xml.toString();
    }
    catch (const QuenfoldHelpersException&)
    {
    }
    try
    {
        xml.loadContent(MXF::SDK::Platform::fromUtf8(bytes).c_str());
        xml.getBool(L"/*/@*");
        xml.getInt(L"/*/*/@*");
    }
    catch (const QuenfoldHelpersException&)
    {
    }
}

void asMediaProfile(const std::wstring& path)
{
    ClipMetadata metadata;
    if (!metadata.load(path.c_str()))
        return;
    XMLHandler xml;
    try
    {
        xml.loadFile(path.c_str());
        const auto umids = xml.getStrings(L"//@*[local-name()='umid']");
        for (std::size_t i = 0; i < umids.size() && i < 16; ++i)
            metadata.xmlFileForUmid(umids[i].c_str());
    }
    catch (const QuenfoldHelpersException&)
    {
    }
}

void asNonRealTimeMeta(const std::wstring& path, std::uint64_t offset)
{
    ClipMetadata metadata;
    try
    {
        metadata.loadMaterialFile(path.c_str(), offset);
    }
    catch (const QuenfoldHelpersException&)
    {
    }
    for (const auto& [frame, text] : metadata.materials())
        requireMarkText(text);
}

void asLanguageFile(const std::wstring& path)
{
    ErrorMessages& messages = ErrorMessages::instance();
    messages.loadFile(path.c_str());
    for (int code = 0; code <= 13; ++code)
        require(messages.text(code) != nullptr);
}

void asLengthValue(const std::string& bytes)
{
    const std::wstring hex(bytes.begin(), bytes.end());
    for (const bool wide : {false, true})
    {
        const std::wstring text = ClipMetadata::decode(hex, wide);
        requireMarkText(text);
        require(text.size() <= 256);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    std::ofstream(inputFile(), std::ios::binary | std::ios::trunc) << bytes;
    const std::wstring path = MXF::SDK::Platform::fromUtf8(inputFile().string());

    throughTheDoor(path, bytes);
    asMediaProfile(path);
    asNonRealTimeMeta(path, size == 0 ? 0 : std::uint64_t(data[0]) << 56);
    asLanguageFile(path);
    asLengthValue(bytes.substr(0, 600));
    return 0;
}
