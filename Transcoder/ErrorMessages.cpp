#include "Transcoder/ErrorMessages.h"

#include "Helpers/XMLHandler/XMLHandler.h"
#include "Transcoder/LoggerHolder.h"

#include <string>

namespace KEP::Halvorn
{

ErrorMessages& ErrorMessages::instance()
{
    static ErrorMessages* const messages = new ErrorMessages;
    return *messages;
}

ErrorMessages::ErrorMessages() : unknownError_(L"Unknown error occurred.")
{
    logEntry(LOG_NOTE, L"Setting default error messages language to English.");
    messages_ = {
        {ERROR_TRANSCODING, L"Unknown error while transcoding."},
        {ERROR_GENERATING_FILES, L"Error received while generating files."},
        {ERROR_INPUT_NOT_SET, L"Decoder pipe input file path is not set."},
        {ERROR_OUTPUT_NOT_SET, L"Encoder pipe output file path is not set."},
        {ERROR_LOADING_DICTIONARY, L"Error while loading the dictionary."},
        {ERROR_NO_DICTIONARY_FILE,
         L"Error while loading the dictionary. No dictionary file was set in KEPModule."},
        {ERROR_LOADING_INPUT, L"Failed to load input file."},
        {ERROR_ANALYZING_INPUT, L"Error while analyzing input file."},
        {ERROR_NO_ESSENCE_TRACKS,
         L"Input mxf file contains no valid essence tracks to perform transcoding."},
        {ERROR_UNSUPPORTED_CODING, L"Input mp4 file contains a not supported coding type."},
        {ERROR_WRAPPING, L"Error while wrapping essence."},
    };
}

const wchar_t* ErrorMessages::text(int code)
{
    const std::lock_guard lock(mutex_);
    const auto found = messages_.find(code);
    return found != messages_.end() ? found->second.c_str() : unknownError_.c_str();
}

void ErrorMessages::replace(int code, const wchar_t* text)
{
    messages_.erase(code);
    messages_.emplace(code, text);
}

bool ErrorMessages::loadFile(const wchar_t* path)
{
    const std::lock_guard lock(mutex_);
    path = path != nullptr ? path : L"";
    logEntry(LOG_NOTE, L"Setting messages language according to file: ") << path;
    try
    {
        Quenfold::Helpers::XMLHandler xml;
        xml.loadFile(path);
        // Only the codes of the catalogue are looked for: a file can't add codes.
        for (int id = 1; id <= ERROR_WRAPPING; ++id)
        {
            const std::wstring xpath = L"//KEP_Halvorn/ErrorCodes//ErrorCode[@id=\"" +
                                       std::to_wstring(id) + L"\"]/@message";
            if (xml.exists(xpath.c_str()))
                replace(id, xml.getString(xpath.c_str()).c_str());
        }
        return true;
    }
    catch (...)
    {
        return false;
    }
}

} // namespace KEP::Halvorn
