#pragma once

#include <memory>
#include <string>
#include <vector>

namespace KEP::Quenfold::Helpers
{

// The one door to XML: parses a document from a file or a string and answers XPath questions in
// wide strings. Documents are treated as hostile: no external entity, DTD, schema or XInclude is
// ever loaded, entity expansion is bounded, and documents larger than MAX_DOCUMENT_SIZE bytes,
// nested deeper than MAX_DEPTH elements or holding more than MAX_ELEMENTS are refused before the
// parser sees them (its cost grows faster than the document). There is no namespace resolver, so
// queries name elements with local-name() tests.
//
// One handler belongs to one thread at a time; handlers on different threads are independent.
// Failures are exceptions of KEP::Quenfold::Helpers::Exceptions.
class XMLHandler
{
public:
    static constexpr std::size_t MAX_DOCUMENT_SIZE = 4 * 1024 * 1024;
    static constexpr std::size_t MAX_DEPTH = 256;
    static constexpr std::size_t MAX_ELEMENTS = 100000;

    XMLHandler();
    ~XMLHandler();
    XMLHandler(const XMLHandler&) = delete;
    XMLHandler& operator=(const XMLHandler&) = delete;

    void loadFile(const wchar_t* path);
    void loadContent(const wchar_t* xml);

    // False for a path that selects nothing and for any failure, a malformed path included.
    bool exists(const wchar_t* xpath);
    // The string value of the first node selected. Throws MissingCODInfo "Couln't retrieve <xpath>
    // from the given XML configuration content." when there is none.
    std::wstring getString(const wchar_t* xpath);
    // Leading decimal digits of getString; 0 when there are none.
    int getInt(const wchar_t* xpath);
    // True when getString, lower-cased, holds "true" or "1" anywhere (so "10" is true).
    bool getBool(const wchar_t* xpath);
    // String values of all nodes selected, in document order. Throws MissingCODInfo "Couln't
    // retrieve any value <xpath> from the given XML configuration content." when there are none.
    std::vector<std::wstring> getStrings(const wchar_t* xpath);
    // The whole document serialised.
    std::wstring toString();

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace KEP::Quenfold::Helpers
