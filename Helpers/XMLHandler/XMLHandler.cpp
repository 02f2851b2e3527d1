#include "XMLHandler.h"

#include "Exceptions.h"
#include "MXF/SDK/DataIO/File/FileDataSource.h"
#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/Platform/Platform.h"

#include <algorithm>
#include <cwctype>
#include <mutex>
#include <string>
#include <string_view>
#include <xalanc/DOMSupport/DOMServices.hpp>
#include <xalanc/PlatformSupport/XSLException.hpp>
#include <xalanc/XPath/NodeRefList.hpp>
#include <xalanc/XPath/XPathEvaluator.hpp>
#include <xalanc/XercesParserLiaison/XercesDOMSupport.hpp>
#include <xalanc/XercesParserLiaison/XercesParserLiaison.hpp>
#include <xercesc/dom/DOM.hpp>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/sax/HandlerBase.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/SecurityManager.hpp>
#include <xercesc/util/XMLEntityResolver.hpp>
#include <xercesc/util/XMLException.hpp>

namespace KEP::Quenfold::Helpers
{

namespace Exceptions
{

QuenfoldHelpersException::QuenfoldHelpersException(std::wstring message, std::string file, int line)
    : message_(std::move(message)), narrow_(MXF::SDK::Platform::toUtf8(message_)),
      file_(std::move(file)), line_(line)
{
}

QuenfoldHelpersException::~QuenfoldHelpersException() = default;

std::wstring QuenfoldHelpersException::location() const
{
    return MXF::SDK::Platform::fromUtf8(file_) + L":" + std::to_wstring(line_);
}

} // namespace Exceptions

namespace
{

namespace XE = xercesc;
namespace XA = xalanc;

#define QUENFOLD_THROW(Type, message) throw Exceptions::Type(message, __FILE__, __LINE__)

// Xerces and Xalan speak UTF-16; our wide strings are UTF-32.
std::u16string toXMLString(const wchar_t* text)
{
    std::u16string out;
    for (; text != nullptr && *text != 0; ++text)
    {
        auto c = static_cast<char32_t>(*text);
        if (c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF))
            c = 0xFFFD;
        if (c >= 0x10000)
        {
            c -= 0x10000;
            out.push_back(static_cast<char16_t>(0xD800 + (c >> 10)));
            out.push_back(static_cast<char16_t>(0xDC00 + (c & 0x3FF)));
        }
        else
            out.push_back(static_cast<char16_t>(c));
    }
    return out;
}

std::wstring toWide(const char16_t* text, std::size_t length)
{
    std::wstring out;
    out.reserve(length);
    for (std::size_t i = 0; i < length; ++i)
    {
        const char16_t c = text[i];
        if (c >= 0xD800 && c <= 0xDBFF && i + 1 < length && text[i + 1] >= 0xDC00 &&
            text[i + 1] <= 0xDFFF)
        {
            out.push_back(
                static_cast<wchar_t>(0x10000 + ((c - 0xD800) << 10) + (text[++i] - 0xDC00)));
        }
        else if (c >= 0xD800 && c <= 0xDFFF)
            out.push_back(0xFFFD);
        else
            out.push_back(static_cast<wchar_t>(c));
    }
    return out;
}

std::wstring toWide(const char16_t* text)
{
    std::size_t length = 0;
    while (text != nullptr && text[length] != 0)
        ++length;
    return toWide(text, length);
}

// Xerces and Xalan keep process-wide tables; they are set up once and live until the process ends.
void initialiseLibraries()
{
    static std::once_flag once;
    std::call_once(once,
                   []
                   {
                       XE::XMLPlatformUtils::Initialize();
                       XA::XPathEvaluator::initialize();
                   });
}

// Every external entity, DTD or schema resolves to nothing: a sidecar must never make us open
// another file or a URL.
class NoExternalResolver : public XE::XMLEntityResolver
{
public:
    XE::InputSource* resolveEntity(XE::XMLResourceIdentifier*) override
    {
        static const XMLByte nothing[1] = {0};
        return new XE::MemBufInputSource(nothing, 0, u"external", false);
    }
};

class FirstErrorHandler : public XE::HandlerBase
{
public:
    void error(const XE::SAXParseException& e) override { record(e); }
    void fatalError(const XE::SAXParseException& e) override { record(e); }
    void resetErrors() override { message.clear(); }

    std::wstring message;

private:
    void record(const XE::SAXParseException& e)
    {
        if (message.empty())
            message = toWide(e.getMessage());
    }
};

std::size_t depthOf(const XE::DOMNode* root)
{
    std::size_t depth = 0, deepest = 0;
    const XE::DOMNode* node = root;
    while (node != nullptr)
    {
        deepest = std::max(deepest, depth);
        if (node->getFirstChild() != nullptr)
        {
            node = node->getFirstChild();
            ++depth;
            continue;
        }
        while (node != nullptr && node != root && node->getNextSibling() == nullptr)
        {
            node = node->getParentNode();
            --depth;
        }
        if (node == nullptr || node == root)
            break;
        node = node->getNextSibling();
    }
    return deepest;
}

// A cheap pass over the raw text that counts start tags and their nesting, so that a hostile
// document is refused before the parser, whose cost grows faster than the nesting, sees it. It
// overcounts rather than undercounts on odd input; the parsed tree is checked again afterwards.
class TagCounter
{
public:
    TagCounter(const XMLByte* bytes, std::size_t size)
    {
        const bool bigEndian = size >= 2 && ((bytes[0] == 0xFE && bytes[1] == 0xFF) ||
                                             (bytes[0] == 0x00 && bytes[1] == 0x3C));
        const bool littleEndian = size >= 2 && ((bytes[0] == 0xFF && bytes[1] == 0xFE) ||
                                                (bytes[0] == 0x3C && bytes[1] == 0x00));
        if (bigEndian || littleEndian)
        {
            units_.reserve(size / 2);
            for (std::size_t i = 0; i + 1 < size; i += 2)
                units_.push_back(bigEndian ? char16_t(bytes[i] << 8 | bytes[i + 1])
                                           : char16_t(bytes[i + 1] << 8 | bytes[i]));
        }
        else
            units_.assign(bytes, bytes + size);
        count();
    }

    std::size_t deepest = 0;
    std::size_t elements = 0;

private:
    bool at(std::size_t i, std::u16string_view text) const
    {
        return units_.compare(i, text.size(), text) == 0;
    }
    std::size_t after(std::size_t i, std::u16string_view end) const
    {
        const std::size_t found = units_.find(end, i);
        return found == std::u16string::npos ? units_.size() : found + end.size();
    }

    void count()
    {
        std::size_t depth = 0;
        for (std::size_t i = units_.find(u'<'); i < units_.size(); i = units_.find(u'<', i))
        {
            if (at(i, u"<!--"))
                i = after(i, u"-->");
            else if (at(i, u"<![CDATA["))
                i = after(i, u"]]>");
            else if (at(i, u"<?") || at(i, u"<!"))
                i = after(i + 1, u">");
            else if (at(i, u"</"))
            {
                depth = depth > 0 ? depth - 1 : 0;
                i = after(i, u">");
            }
            else
            {
                // Attribute values may hold '>' but never '<', so the tag ends at the first '>'.
                const std::size_t end = after(i, u">");
                ++elements;
                if (end < 2 || units_[end - 2] != u'/')
                    deepest = std::max(deepest, ++depth);
                i = end;
            }
        }
    }

    std::u16string units_;
};

} // namespace

struct XMLHandler::Impl
{
    Impl()
    {
        initialiseLibraries();
        liaison = std::make_unique<XA::XercesParserLiaison>();
        domSupport = std::make_unique<XA::XercesDOMSupport>(*liaison);
        security.setEntityExpansionLimit(1000);
        parser = std::make_unique<XE::XercesDOMParser>();
        parser->setValidationScheme(XE::XercesDOMParser::Val_Never);
        parser->setDoNamespaces(true);
        parser->setDoSchema(false);
        parser->setLoadSchema(false);
        parser->setLoadExternalDTD(false);
        parser->setSkipDTDValidation(true);
        parser->setDoXInclude(false);
        parser->setCreateEntityReferenceNodes(false);
        parser->setDisableDefaultEntityResolution(true);
        parser->setXMLEntityResolver(&resolver);
        parser->setSecurityManager(&security);
        parser->setErrorHandler(&errors);
        parser->resetDocumentPool();
    }

    ~Impl()
    {
        root = nullptr;
        domSupport.reset();
        liaison.reset(); // its wrappers point into the parser's document
        parser.reset();
    }

    void parse(const XMLByte* bytes, std::size_t size)
    {
        // Whatever happens below, the old document is gone.
        root = nullptr;
        liaison->reset();
        parser->resetDocumentPool();
        if (size > MAX_DOCUMENT_SIZE)
            QUENFOLD_THROW(InvalidCODStruture, L"XML document larger than " +
                                                   std::to_wstring(MAX_DOCUMENT_SIZE) + L" bytes");
        const TagCounter tags(bytes, size);
        if (tags.deepest > MAX_DEPTH)
            QUENFOLD_THROW(InvalidCODStruture, L"XML document nested deeper than " +
                                                   std::to_wstring(MAX_DEPTH) + L" elements");
        if (tags.elements > MAX_ELEMENTS)
            QUENFOLD_THROW(InvalidCODStruture, L"XML document holds more than " +
                                                   std::to_wstring(MAX_ELEMENTS) + L" elements");
        errors.resetErrors();
        try
        {
            XE::MemBufInputSource source(bytes, size, u"bufID", false);
            parser->parse(source);
        }
        catch (const XE::DOMException& e)
        {
            QUENFOLD_THROW(QuenfoldHelpersException, L"DOMException: " + toWide(e.getMessage()));
        }
        catch (const XE::XMLException& e)
        {
            QUENFOLD_THROW(QuenfoldHelpersException, L"Unknown error in Xerces or Xalan");
        }
        catch (const XE::SAXException&)
        {
            QUENFOLD_THROW(QuenfoldHelpersException, L"Unknown error in Xerces or Xalan");
        }
        XE::DOMDocument* document = parser->getDocument();
        if (document == nullptr || !errors.message.empty())
            QUENFOLD_THROW(MissingCODInfo,
                           L"Couln't retrieve any COD information from the given XML content");
        if (document->getDocumentElement() == nullptr)
            QUENFOLD_THROW(MissingCODInfo, L"Unable to retrieve root element from document");
        if (depthOf(document) > MAX_DEPTH)
            QUENFOLD_THROW(InvalidCODStruture, L"XML document nested deeper than " +
                                                   std::to_wstring(MAX_DEPTH) + L" elements");
        try
        {
            root = liaison->createDocument(document, false, true, true);
        }
        catch (...)
        {
            root = nullptr;
        }
        if (root == nullptr)
            QUENFOLD_THROW(MissingCODInfo,
                           L"Couln't retrieve any root information from the given XML content");
    }

    XA::XalanNode* selectSingle(const wchar_t* xpath)
    {
        requireDocument();
        const std::u16string path = toXMLString(xpath);
        try
        {
            XA::XPathEvaluator evaluator;
            return evaluator.selectSingleNode(*domSupport, root, path.c_str());
        }
        catch (...)
        {
            translate();
        }
    }

    std::vector<std::wstring> selectAll(const wchar_t* xpath)
    {
        requireDocument();
        const std::u16string path = toXMLString(xpath);
        std::vector<std::wstring> values;
        try
        {
            XA::XPathEvaluator evaluator;
            XA::NodeRefList nodes;
            evaluator.selectNodeList(nodes, *domSupport, root, path.c_str());
            for (XA::NodeRefList::size_type i = 0; i < nodes.getLength(); ++i)
                values.push_back(valueOf(*nodes.item(i)));
        }
        catch (...)
        {
            translate();
        }
        return values;
    }

    static std::wstring valueOf(const XA::XalanNode& node)
    {
        XA::XalanDOMString data;
        XA::DOMServices::getNodeData(node, data);
        return toWide(data.c_str(), data.length());
    }

    void requireDocument()
    {
        if (root == nullptr)
            QUENFOLD_THROW(MissingCODInfo,
                           L"Couln't retrieve any COD information from the given XML content");
    }

    [[noreturn]] static void translate()
    {
        try
        {
            throw;
        }
        catch (const Exceptions::QuenfoldHelpersException&)
        {
            throw;
        }
        catch (const XE::DOMException& e)
        {
            QUENFOLD_THROW(QuenfoldHelpersException, L"DOMException: " + toWide(e.getMessage()));
        }
        catch (...)
        {
            QUENFOLD_THROW(QuenfoldHelpersException, L"Unknown error in Xerces or Xalan");
        }
    }

    NoExternalResolver resolver;
    FirstErrorHandler errors;
    XE::SecurityManager security;
    std::unique_ptr<XA::XercesParserLiaison> liaison;
    std::unique_ptr<XA::XercesDOMSupport> domSupport;
    std::unique_ptr<XE::XercesDOMParser> parser;
    XA::XalanDocument* root = nullptr;
};

XMLHandler::XMLHandler() : impl_(std::make_unique<Impl>()) {}

XMLHandler::~XMLHandler() = default;

void XMLHandler::loadFile(const wchar_t* path)
{
    std::vector<XMLByte> bytes;
    try
    {
        MXF::SDK::DataIO::File::FileDataSource file(path);
        if (file.remaining() > MAX_DOCUMENT_SIZE)
            QUENFOLD_THROW(InvalidCODStruture, L"XML document larger than " +
                                                   std::to_wstring(MAX_DOCUMENT_SIZE) + L" bytes");
        bytes.resize(file.remaining());
        bytes.resize(file.read(bytes.data(), bytes.size()));
    }
    catch (const MXF::SDK::Exceptions::BaseException& e)
    {
        QUENFOLD_THROW(QuenfoldHelpersException, e.message());
    }
    impl_->parse(bytes.data(), bytes.size());
}

void XMLHandler::loadContent(const wchar_t* xml)
{
    // Handed over as UTF-8 bytes; a declared encoding other than that is the document's own lie.
    const std::string bytes = MXF::SDK::Platform::toUtf8(xml != nullptr ? xml : L"");
    impl_->parse(reinterpret_cast<const XMLByte*>(bytes.data()), bytes.size());
}

bool XMLHandler::exists(const wchar_t* xpath)
{
    try
    {
        return impl_->selectSingle(xpath) != nullptr;
    }
    catch (...)
    {
        return false;
    }
}

std::wstring XMLHandler::getString(const wchar_t* xpath)
{
    const xalanc::XalanNode* node = impl_->selectSingle(xpath);
    if (node == nullptr)
        QUENFOLD_THROW(MissingCODInfo, L"Couln't retrieve " + std::wstring(xpath) +
                                           L" from the given XML configuration content.");
    return Impl::valueOf(*node);
}

int XMLHandler::getInt(const wchar_t* xpath)
{
    const std::wstring text = getString(xpath);
    long long value = 0;
    for (const wchar_t c : text)
    {
        if (c < L'0' || c > L'9')
            break;
        value = std::min<long long>(value * 10 + (c - L'0'), INT32_MAX);
    }
    return static_cast<int>(value);
}

bool XMLHandler::getBool(const wchar_t* xpath)
{
    std::wstring text = getString(xpath);
    std::transform(text.begin(), text.end(), text.begin(),
                   [](wchar_t c) { return static_cast<wchar_t>(std::towlower(c)); });
    return text.find(L"true") != std::wstring::npos || text.find(L'1') != std::wstring::npos;
}

std::vector<std::wstring> XMLHandler::getStrings(const wchar_t* xpath)
{
    std::vector<std::wstring> values = impl_->selectAll(xpath);
    if (values.empty())
        QUENFOLD_THROW(MissingCODInfo, L"Couln't retrieve any value " + std::wstring(xpath) +
                                           L" from the given XML configuration content.");
    return values;
}

std::wstring XMLHandler::toString()
{
    impl_->requireDocument();
    XE::DOMDocument* document = impl_->parser->getDocument();
    try
    {
        XE::DOMImplementation* implementation =
            XE::DOMImplementationRegistry::getDOMImplementation(u"LS");
        std::unique_ptr<XE::DOMLSSerializer, void (*)(XE::DOMLSSerializer*)> serializer(
            static_cast<XE::DOMImplementationLS*>(implementation)->createLSSerializer(),
            [](XE::DOMLSSerializer* s) { s->release(); });
        XMLCh* text = serializer->writeToString(document);
        if (text == nullptr)
            QUENFOLD_THROW(InvalidCODStruture, L"Error converting XML document to string");
        std::wstring out = toWide(text);
        XE::XMLString::release(&text);
        return out;
    }
    catch (...)
    {
        Impl::translate();
    }
}

} // namespace KEP::Quenfold::Helpers
