#pragma once

#include "KEP/Halvorn/KEPExport.h"

#include <cstdint>

namespace KEP::Halvorn
{

// Any int may be given: values other than these make no pipe.
enum KEPCodecPipeType : int
{
    XDCAMDecodePipeType = 0,
    XDCAMEXDecodePipeType = 1,
    AvidEncodePipeType = 2,
    OPAtomEncodePipeType = 3
};

// A pipe made by KEPModule::newCodecPipe. The host owns it and releases it with plain delete.
class KEP_HALVORN_API KEPCodecPipe
{
public:
    virtual ~KEPCodecPipe();

    KEP_HALVORN_ALLOCATION

protected:
    KEPCodecPipe() = default;
    KEPCodecPipe(const KEPCodecPipe&) = default;
    KEPCodecPipe& operator=(const KEPCodecPipe&) = default;
};

// Chooses the clip to read and, optionally, the frames of it.
class KEP_HALVORN_API KEPDecodePipe : public KEPCodecPipe
{
public:
    ~KEPDecodePipe() override;

    // One media file, its XML sidecar (not null) and the start offset of the clip.
    virtual bool setInputFile(const wchar_t* mediaFile, const wchar_t* xmlFile,
                              int startOffset) = 0;
    // The clip of a disc, found by its UMID in the disc's MediaProfile file.
    virtual bool setInputUmid(const wchar_t* mediaProfileFile, const wchar_t* umid) = 0;
    virtual void setInPoint(std::uint64_t inPoint, std::uint64_t prechargeFrames) = 0;
    virtual void setDuration(std::uint64_t totalFrames, std::uint64_t displayedFrames) = 0;
    // False, with a log line, unless both setInPoint and setDuration were called and agree.
    virtual bool useInOutPoint() = 0;

    KEP_HALVORN_ALLOCATION
};

class KEP_HALVORN_API KEPEncodePipe : public KEPCodecPipe
{
public:
    ~KEPEncodePipe() override;

    KEP_HALVORN_ALLOCATION
};

// Writes one OP-Atom MXF file per track.
class KEP_HALVORN_API KEPOPAtomEncodePipe : public KEPEncodePipe
{
public:
    ~KEPOPAtomEncodePipe() override;

    // Files go to `folder` + "/" + `baseName` + the track's file name; `baseName` carries its own
    // separator if it wants one.
    virtual bool setOutput(const wchar_t* folder, const wchar_t* baseName) = 0;
    // What the Identification set of every output file says.
    virtual bool setIdentification(const wchar_t* companyName, const wchar_t* productName,
                                   std::uint16_t major, std::uint16_t minor, std::uint16_t tertiary,
                                   std::uint16_t patch, std::uint16_t release,
                                   const wchar_t* versionString, const wchar_t* productUID) = 0;

    KEP_HALVORN_ALLOCATION
};

// Writes the OP-Atom files and an AAF file that links them.
class KEP_HALVORN_API KEPAvidEncodePipe : public KEPEncodePipe
{
public:
    ~KEPAvidEncodePipe() override;

    // True when both strings are non-null.
    virtual bool setOutput(const wchar_t* aafFilePath, const wchar_t* mediaFolder) = 0;

    KEP_HALVORN_ALLOCATION
};

} // namespace KEP::Halvorn
