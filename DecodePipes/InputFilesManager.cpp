#include "DecodePipes/InputFilesManager.h"

#include "MXF/SDK/DataIO/File/FileDataSource.h"
#include "Transcoder/ErrorMessages.h"
#include "Utils/ErrorMessageEntity.h"

#include <algorithm>

namespace KEP::Halvorn::DecodePipes
{

struct InputFilesManager::Impl : Utils::ErrorMessageEntity
{
    std::vector<std::wstring> fileNames;
    std::vector<FileEntry> entries;
    std::size_t current = 0;
    std::int64_t startFrame = 0;
    std::uint64_t totalFrames = 0;
    std::int64_t clipOffset = 0;
    bool firstLoad = false;

    void fail(const wchar_t* detail)
    {
        errorCode_ = ERROR_LOADING_INPUT;
        errorMessage_ += detail;
    }
};

InputFilesManager::InputFilesManager() : impl_(std::make_unique<Impl>()) {}

InputFilesManager::~InputFilesManager() = default;

void InputFilesManager::setFiles(std::vector<std::wstring> fileNames)
{
    impl_->fileNames = std::move(fileNames);
}

// The sums wrap as unsigned 64-bit numbers and the in point test is signed: the first entry of a
// clip spread over several files is measured against the overall in point.
bool InputFilesManager::load(FileBoundsProvider& provider, std::uint64_t inPoint,
                             std::uint64_t wanted, std::int64_t clipOffset, bool useInOutPoint)
{
    Impl& m = *impl_;
    m.firstLoad = true;
    m.totalFrames = 0;
    m.startFrame = 0;
    // A load that follows a failed one without a reset must not keep the earlier entries.
    m.entries.clear();
    m.current = 0;
    std::uint64_t skipped = 0;
    bool started = false;
    for (const std::wstring& name : m.fileNames)
    {
        if (useInOutPoint && m.totalFrames >= wanted)
            break;
        const InputFile file = std::make_shared<MXF::SDK::DataIO::File::FileDataSource>(name);
        const std::unique_ptr<FileBoundsRetriever> retriever =
            provider.createFileBoundsRetriever(file);
        const std::uint64_t duration = retriever->duration();
        if (duration == FileBoundsRetriever::UNKNOWN_DURATION)
        {
            m.fail(L" -> Failed to load file duration.");
            return false;
        }
        FileEntry entry;
        entry.file = file;
        if (!useInOutPoint)
        {
            m.totalFrames += duration;
            m.clipOffset = clipOffset;
        }
        else if (!started)
        {
            const std::uint64_t sum = duration + skipped;
            if (static_cast<std::int64_t>(sum) < static_cast<std::int64_t>(inPoint))
            {
                skipped = sum;
                continue;
            }
            const std::uint64_t length = std::min(duration - inPoint, wanted);
            const std::uint64_t first = inPoint - skipped;
            const std::uint64_t moveBack = retriever->setBounds(first, length);
            entry.firstFrame = first;
            entry.frameCount = length;
            entry.moveBack = moveBack;
            entry.bounded = true;
            m.startFrame = static_cast<std::int64_t>(inPoint - moveBack);
            m.totalFrames += retriever->duration();
            m.clipOffset = clipOffset + static_cast<std::int64_t>(moveBack);
            started = true;
        }
        else if (duration + m.totalFrames < wanted)
        {
            skipped += duration;
            m.totalFrames += duration;
        }
        else
        {
            retriever->setBounds(0, wanted - m.totalFrames);
            entry.frameCount = retriever->duration();
            entry.bounded = true;
            m.totalFrames += entry.frameCount;
        }
        file->seek(0);
        m.entries.push_back(std::move(entry));
    }
    if (m.entries.empty())
        m.fail(L" -> Unable to load input sources.");
    m.current = 0;
    return true;
}

FileEntry InputFilesManager::currentEntry() const
{
    return impl_->current < impl_->entries.size() ? impl_->entries[impl_->current] : FileEntry{};
}

bool InputFilesManager::advance()
{
    if (impl_->current < impl_->entries.size())
        ++impl_->current;
    return impl_->current < impl_->entries.size();
}

void InputFilesManager::reset()
{
    impl_->entries.clear();
    impl_->current = 0;
}

std::uint64_t InputFilesManager::totalFrames() const
{
    return impl_->totalFrames;
}

std::int64_t InputFilesManager::clipOffset() const
{
    return impl_->clipOffset;
}

std::int64_t InputFilesManager::startFrame() const
{
    return impl_->startFrame;
}

const std::vector<std::wstring>& InputFilesManager::fileNames() const
{
    return impl_->fileNames;
}

const wchar_t* InputFilesManager::firstFileName() const
{
    return impl_->fileNames.empty() ? L"" : impl_->fileNames.front().c_str();
}

int InputFilesManager::getErrorCode() const
{
    return impl_->getErrorCode();
}

const wchar_t* InputFilesManager::getErrorMessage() const
{
    return impl_->getErrorMessage();
}

} // namespace KEP::Halvorn::DecodePipes
