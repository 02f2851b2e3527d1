#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace MXF::SDK::DataIO
{
class RandomAccessDataSource;
}

namespace KEP::Halvorn::DecodePipes
{

using InputFile = std::shared_ptr<MXF::SDK::DataIO::RandomAccessDataSource>;

// Measures one input file in frames and restricts it to a range of them. Each format has its own.
class FileBoundsRetriever
{
public:
    static constexpr std::uint64_t UNKNOWN_DURATION = ~std::uint64_t{0};

    virtual ~FileBoundsRetriever() = default;
    // Frames of the file as now bounded; UNKNOWN_DURATION when it can't be told.
    virtual std::uint64_t duration() = 0;
    // Restricts the file to `frameCount` frames from `firstFrame`. Returns how many frames the
    // start had to move back (to a frame the format can start from), 0 for none.
    virtual std::uint64_t setBounds(std::uint64_t firstFrame, std::uint64_t frameCount) = 0;
};

// What makes the retriever for a file of its format: the decode pipe.
class FileBoundsProvider
{
public:
    virtual ~FileBoundsProvider() = default;
    virtual std::unique_ptr<FileBoundsRetriever> createFileBoundsRetriever(InputFile file) = 0;
};

// One file to read, open, and when `bounded` the range of it that is wanted.
struct FileEntry
{
    InputFile file;
    std::uint64_t firstFrame = 0;
    std::uint64_t frameCount = 0;
    std::uint64_t moveBack = 0;
    bool bounded = false;
};

// Turns the list of a clip's files, with an optional in point and frame count, into the entries
// the pipe reads: files wholly before the in point are dropped, the one holding it is bounded from
// there, and the files after it until enough frames are held, the last one trimmed. A failure
// leaves ERROR_LOADING_INPUT and a detail in the manager's own error entity.
class InputFilesManager
{
public:
    InputFilesManager();
    ~InputFilesManager();
    InputFilesManager(const InputFilesManager&) = delete;
    InputFilesManager& operator=(const InputFilesManager&) = delete;

    void setFiles(std::vector<std::wstring> fileNames);
    // Opens and measures the files. Frames are counted over the files end to end. Without
    // `useInOutPoint` every file is taken whole. False only for a file whose duration can't be
    // told; an in point past the end gives no entries, ERROR_LOADING_INPUT, and still true. Errors
    // opening a file are exceptions, and pass.
    bool load(FileBoundsProvider& provider, std::uint64_t inPoint, std::uint64_t wanted,
              std::int64_t clipOffset, bool useInOutPoint);

    // The entry being read; one without a file past the last.
    FileEntry currentEntry() const;
    // On to the next entry; false when there is none.
    bool advance();
    // Drops the entries, and their open files, and goes back to the first. The file names and the
    // totals stay until the next load.
    void reset();

    // Frames of all entries, as trimmed.
    std::uint64_t totalFrames() const;
    // The clip offset given to load, plus the move-back of the first entry.
    std::int64_t clipOffset() const;
    // The in point within the first entry's file, less its move-back.
    std::int64_t startFrame() const;
    const std::vector<std::wstring>& fileNames() const;
    // Never null; empty when there are no files.
    const wchar_t* firstFileName() const;

    int getErrorCode() const;
    // Never null.
    const wchar_t* getErrorMessage() const;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace KEP::Halvorn::DecodePipes
