#include "KEP/Halvorn/KEPModule.h"

#include "Transcoder/Samples/Allocation.h"
#include "Transcoder/DictionaryFile.h"
#include "Transcoder/ErrorMessages.h"
#include "Transcoder/LoggerHolder.h"

#include <mutex>
#include <set>
#include <string>

namespace KEP::Halvorn
{

namespace
{

// Every path ever set stays, once each: the pointer a getter handed out lives as long as the
// process, whatever another thread sets meanwhile.
struct DictionaryFile
{
    std::mutex mutex;
    std::set<std::wstring> paths{std::wstring()};
    const std::wstring* current = &*paths.begin();
};

DictionaryFile& dictionaryFile()
{
    static DictionaryFile* const file = new DictionaryFile;
    return *file;
}

} // namespace

std::wstring currentDictionaryFile()
{
    DictionaryFile& file = dictionaryFile();
    const std::lock_guard lock(file.mutex);
    return *file.current;
}

KEPModule& KEPModule::instance()
{
    // The guard of a local static is the test, lock and second test that a lazy singleton needs.
    static KEPModule* const module = new KEPModule;
    return *module;
}

KEPModule::KEPModule()
{
    logEntry(LOG_TRACE, L"Created Singleton KEPModule.");
    // The English texts must exist before any pipe can fail.
    ErrorMessages::instance();
}

KEPModule::~KEPModule() = default;

void KEPModule::mxfBinaryDictionary(const wchar_t* path)
{
    DictionaryFile& file = dictionaryFile();
    const std::lock_guard lock(file.mutex);
    file.current = &*file.paths.emplace(path != nullptr ? path : L"").first;
}

const wchar_t* KEPModule::mxfBinaryDictionary() const
{
    DictionaryFile& file = dictionaryFile();
    const std::lock_guard lock(file.mutex);
    return file.current->c_str();
}

bool KEPModule::setErrorCodesFile(const wchar_t* path)
{
    return ErrorMessages::instance().loadFile(path);
}

void KEPModule::installLogger(IKEPHalvornLogger* logger)
{
    LoggerHolder::instance().setLogger(logger);
}

IKEPHalvornLogger* KEPModule::getLogger() const
{
    return LoggerHolder::instance().logger();
}

KEP_HALVORN_DEFINE_ALLOCATION(KEPModule)

} // namespace KEP::Halvorn
