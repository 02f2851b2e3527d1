#pragma once

#include "DecodePipes/BaseDecodePipe.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace KEP::Halvorn::DecodePipes
{

// Reads XDCAM MXF clips: one file a clip, every track in it, essence read element by element in
// the order the file holds them. The header metadata's first file package gives one track
// descriptor per picture or sound track; the essence comes through the toolkit's essence reader.
// Only the first file of the input is read, always whole: in and out points only choose files.
class XDCAMDecodePipe final : public BaseDecodePipe
{
public:
    XDCAMDecodePipe();
    ~XDCAMDecodePipe() override;

    // Measures an XDCAM file in frames of its first timeline track; UNKNOWN_DURATION when the
    // essence's length is unknown. Trimming is not offered: setBounds does nothing. Throws what
    // the toolkit throws for a file that is not MXF or whose metadata can't be read.
    std::unique_ptr<FileBoundsRetriever> createFileBoundsRetriever(InputFile file) override;

    // Frames of the input as loaded: the sum over its files.
    std::uint64_t clipDuration() const { return inputFiles_.totalFrames(); }
    const InputFilesManager& inputFiles() const { return inputFiles_; }

protected:
    void closeCurrentFile() override;
    bool analyzeCurrentFile() override;
    // One essence element, the next in the file of a track with a descriptor; nothing, after a
    // trace line, at the end.
    void readNextSamples() override;

private:
    struct OpenFile;

    std::unique_ptr<OpenFile> open_;
};

} // namespace KEP::Halvorn::DecodePipes
