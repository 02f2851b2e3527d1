#include "DecodePipes/ClipMetadata.h"

#include "Helpers/XMLHandler/Exceptions.h"
#include "Helpers/XMLHandler/XMLHandler.h"
#include "Transcoder/LoggerHolder.h"

#include <algorithm>
#include <cwchar>
#include <map>

namespace KEP::Halvorn::DecodePipes
{

namespace
{

using Quenfold::Helpers::XMLHandler;
using Quenfold::Helpers::Exceptions::QuenfoldHelpersException;

const std::wstring MATERIAL_HEAD = L"/*[local-name()='MediaProfile']/*[local-name()='Contents']/"
                                   L"*[local-name()='Material'][@*[local-name()='umid']=\"";
const std::wstring MATERIAL_URI_TAIL = L"\"]/@*[local-name()='uri']";
const std::wstring COMPONENT_URI_TAIL = L"\"]/*[local-name()='Component']/@*[local-name()='uri']";
const std::wstring COMPONENT_OFFSET_TAIL =
    L"\"]/*[local-name()='Component']/@*[local-name()='offset']";
const std::wstring SIDECAR_TAIL = L"\"]/*[local-name()='RelevantInfo'][./@*[local-name()='type']="
                                  L"\"XML\"]/@*[local-name()='uri']";

const std::wstring SMIL_REFS =
    L"/*[local-name()='smil']/*[local-name()='body']/"
    L"*[local-name()='par']/*[local-name()='ref']/@*[local-name()='src']";
const std::wstring UMID_URN = L"urn:smpte:umid:";

const std::wstring PACKETS = L"/*[local-name()='NonRealTimeMeta']/*[local-name()='KlvPacketTable']/"
                             L"*[local-name()='KlvPacket']";
const std::wstring FRAME_COUNT = L"@*[local-name()='frameCount']";
const std::wstring LENGTH_VALUE = L"@*[local-name()='lengthValue']";
const std::wstring KEY = L"@*[local-name()='key']";
const std::wstring DURATION =
    L"/*[local-name()='NonRealTimeMeta']/*[local-name()='Duration']/@*[local-name()='value']";

const wchar_t* orEmpty(const wchar_t* text)
{
    return text != nullptr ? text : L"";
}

std::wstring stringOrEmpty(XMLHandler& xml, const std::wstring& xpath)
{
    return xml.exists(xpath.c_str()) ? xml.getString(xpath.c_str()) : std::wstring();
}

std::vector<std::wstring> stringsOrNone(XMLHandler& xml, const std::wstring& xpath)
{
    return xml.exists(xpath.c_str()) ? xml.getStrings(xpath.c_str()) : std::vector<std::wstring>();
}

// For each frame count, the `attribute` of the first packet of that count that has one. Packets
// that have both attributes give the two lists below in the same document order, so they pair up.
std::map<std::wstring, std::wstring> firstByFrameCount(XMLHandler& xml,
                                                       const std::wstring& attribute)
{
    const std::wstring both = PACKETS + L"[" + FRAME_COUNT + L" and " + attribute + L"]/";
    const std::vector<std::wstring> counts = stringsOrNone(xml, both + FRAME_COUNT);
    const std::vector<std::wstring> values = stringsOrNone(xml, both + attribute);
    std::map<std::wstring, std::wstring> first;
    for (std::size_t i = 0; i < counts.size() && i < values.size(); ++i)
        first.emplace(counts[i], values[i]);
    return first;
}

// The kind of a material by its uri: the four characters after "./", in any letter case, name the
// folder of clips or of takes.
std::wstring uriKind(const std::wstring& uri)
{
    if (uri.size() < 6)
        return {};
    std::wstring kind = uri.substr(2, 4);
    for (wchar_t& c : kind)
        if (c >= L'A' && c <= L'Z')
            c = static_cast<wchar_t>(c - L'A' + L'a');
    return kind;
}

// Compared over the length of the key as written, so a cut-off key still counts.
bool isWideKey(const std::wstring& key)
{
    return !key.empty() && key.size() <= ClipMetadata::WIDE_MARK_KEY.size() &&
           ClipMetadata::WIDE_MARK_KEY.compare(0, key.size(), key) == 0;
}

unsigned hexDigit(wchar_t c)
{
    if (c >= L'0' && c <= L'9')
        return static_cast<unsigned>(c - L'0');
    if (c >= L'a' && c <= L'f')
        return static_cast<unsigned>(c - L'a' + 10);
    if (c >= L'A' && c <= L'F')
        return static_cast<unsigned>(c - L'A' + 10);
    return 0;
}

// Two characters as one byte. A character that isn't a hexadecimal digit, or lies past the end,
// reads as 0.
unsigned readPair(std::wstring_view hex, std::size_t& next)
{
    unsigned value = 0;
    for (int i = 0; i < 2; ++i, ++next)
        value = value * 16 + (next < hex.size() ? hexDigit(hex[next]) : 0);
    return value;
}

} // namespace

struct ClipMetadata::Impl
{
    XMLHandler document;
    std::wstring mediaProfileFolder;
    std::wstring mediaProfileFile;
    std::vector<std::wstring> files;
    std::wstring clipUmid;
    ClipMaterials materials;

    std::wstring componentUri(const std::wstring& umid)
    {
        return stringOrEmpty(document, MATERIAL_HEAD + umid + COMPONENT_URI_TAIL);
    }
};

ClipMetadata::ClipMetadata() : impl_(std::make_unique<Impl>()) {}

ClipMetadata::~ClipMetadata() = default;

bool ClipMetadata::load(const wchar_t* path)
{
    path = orEmpty(path);
    try
    {
        impl_->document.loadFile(path);
    }
    catch (const QuenfoldHelpersException& e)
    {
        logEntry(LOG_TRACE, L"Unable to load MediaPro file (")
            << path << L" - " << e.message() << L")";
        return false;
    }
    impl_->mediaProfileFile = path;
    impl_->mediaProfileFolder = mediaProfileFolder(path);
    return true;
}

std::vector<std::wstring> ClipMetadata::filesForUmid(const wchar_t* umid)
{
    Impl& m = *impl_;
    m.files.clear();
    const std::wstring own = orEmpty(umid);
    try
    {
        const std::wstring uri = stringOrEmpty(m.document, MATERIAL_HEAD + own + MATERIAL_URI_TAIL);
        if (uri.empty())
        {
            logEntry(LOG_ERROR, L"Unable to retrieve uri in material node for umid: ") << own;
            return m.files;
        }
        const std::wstring kind = uriKind(uri);
        if (kind == L"clpr")
        {
            m.clipUmid = own;
            const std::wstring component = m.componentUri(own);
            if (!component.empty())
                m.files.push_back(m.mediaProfileFolder + component);
            loadMaterialsForUmids({own});
        }
        else if (kind == L"takr")
        {
            try
            {
                loadTake(m.mediaProfileFolder + uri);
            }
            catch (const QuenfoldHelpersException& e)
            {
                logEntry(LOG_TRACE, L"Unable to open SMILE file pointed by TAKE UMID. (")
                    << e.message() << L")";
            }
        }
    }
    catch (...)
    {
        // What was found before the failure stands.
    }
    return m.files;
}

void ClipMetadata::loadTake(const std::wstring& smilFile)
{
    Impl& m = *impl_;
    XMLHandler smil;
    smil.loadFile(smilFile.c_str());
    std::vector<std::wstring> umids;
    if (smil.exists(SMIL_REFS.c_str()))
        umids = smil.getStrings(SMIL_REFS.c_str());
    for (std::wstring& clip : umids)
        if (clip.starts_with(UMID_URN))
            clip.erase(0, UMID_URN.size());
    if (!umids.empty())
        m.clipUmid = umids.front();
    for (const std::wstring& clip : umids)
    {
        const std::wstring component = m.componentUri(clip);
        if (!component.empty())
            m.files.push_back(m.mediaProfileFolder + component);
        else
            logEntry(LOG_TRACE, L"Didn't find matching material node for take clip with umid: ")
                << clip;
    }
    loadMaterialsForUmids(umids);
}

int ClipMetadata::componentOffset()
{
    if (impl_->clipUmid.empty())
        return 0;
    const std::wstring offset = MATERIAL_HEAD + impl_->clipUmid + COMPONENT_OFFSET_TAIL;
    return impl_->document.exists(offset.c_str()) ? impl_->document.getInt(offset.c_str()) : 0;
}

std::wstring ClipMetadata::xmlFileForUmid(const wchar_t* umid)
{
    const std::wstring uri =
        stringOrEmpty(impl_->document, MATERIAL_HEAD + orEmpty(umid) + SIDECAR_TAIL);
    return uri.empty() ? uri : impl_->mediaProfileFolder + uri;
}

std::uint64_t ClipMetadata::loadMaterialFile(const wchar_t* path, std::uint64_t frameOffset)
{
    XMLHandler xml;
    xml.loadFile(orEmpty(path));
    // Every query walks the table once, whatever the number of marks: a mark is the frame count of
    // a packet with the length value and key of the first packet of that count that has them.
    const std::map<std::wstring, std::wstring> lengthValues = firstByFrameCount(xml, LENGTH_VALUE);
    const std::map<std::wstring, std::wstring> keys = firstByFrameCount(xml, KEY);
    for (const std::wstring& value : stringsOrNone(xml, PACKETS + L"/" + FRAME_COUNT))
    {
        const auto hex = lengthValues.find(value);
        if (hex == lengthValues.end())
            continue;
        const auto key = keys.find(value);
        const bool wide = key != keys.end() && isWideKey(key->second);
        const std::uint64_t frame =
            static_cast<std::uint64_t>(std::wcstoll(value.c_str(), nullptr, 10));
        // A count met before names the same packet again; its frame keeps its first text.
        impl_->materials.emplace(frame + frameOffset, decode(hex->second, wide));
    }
    if (!xml.exists(DURATION.c_str()))
        return 0;
    return static_cast<std::uint64_t>(static_cast<std::int64_t>(xml.getInt(DURATION.c_str())));
}

void ClipMetadata::loadMaterialsForUmids(const std::vector<std::wstring>& umids)
{
    std::uint64_t offset = 0;
    for (const std::wstring& umid : umids)
    {
        const std::wstring path = xmlFileForUmid(umid.c_str());
        if (path.empty())
            return;
        offset += loadMaterialFile(path.c_str(), offset);
    }
}

ClipMaterials ClipMetadata::materials() const
{
    return impl_->materials;
}

ClipMaterials ClipMetadata::loadMaterials(const wchar_t* xmlFile)
{
    // No sidecar, no marks: spare the XML library's start-up, the dearest part of a short job.
    if (xmlFile == nullptr || *xmlFile == L'\0')
        return {};
    ClipMetadata metadata;
    try
    {
        metadata.loadMaterialFile(xmlFile, 0);
    }
    catch (const QuenfoldHelpersException&)
    {
        // A sidecar that can't be read costs its marks, not the clip.
    }
    return metadata.materials();
}

std::wstring ClipMetadata::decode(std::wstring_view hex, bool wide)
{
    std::size_t next = 0;
    unsigned length = 0;
    if (hex.size() >= 2 && hex.size() % 2 == 0)
        length = readPair(hex, next);
    std::wstring text;
    // The length byte counts as the first pair even when an odd count left it unread.
    for (unsigned pairs = 1; pairs <= length;)
    {
        const unsigned a = readPair(hex, next);
        ++pairs;
        if (!wide)
        {
            text.push_back(static_cast<wchar_t>(a));
            continue;
        }
        unsigned b = 0;
        if (pairs <= length)
        {
            b = readPair(hex, next);
            ++pairs;
        }
        text.push_back(static_cast<wchar_t>(a * 256 + b));
    }
    text.push_back(L'\0');
    return text;
}

std::wstring mediaProfileFolder(std::wstring_view mediaProfileFile)
{
    std::wstring folder(mediaProfileFile);
    const std::size_t kept = folder.starts_with(L"\\\\") ? 2 : 0;
    std::replace(folder.begin() + static_cast<std::ptrdiff_t>(kept), folder.end(), L'\\', L'/');
    const std::size_t last = folder.rfind(L'/');
    return last == std::wstring::npos ? std::wstring() : folder.substr(0, last + 1);
}

} // namespace KEP::Halvorn::DecodePipes
