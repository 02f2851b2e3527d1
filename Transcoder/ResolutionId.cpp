#include "Transcoder/ResolutionId.h"

#include "Transcoder/LoggerHolder.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace KEP::Halvorn
{

namespace
{

struct FieldRateRow
{
    std::int32_t numerator;
    std::int32_t denominator;
    int progressive;
    int interlaced;
};

constexpr FieldRateRow FIELD_RATES[] = {
    {30000, 1001, 30, 60}, {60000, 1001, 60, 60}, {25, 1, 25, 50},
    {50, 1, 50, 50},       {24000, 1001, 24, 24},
};

struct RateRow
{
    int fieldRate;
    int id;
};

// XDCAM HD at 25 Mbit/s (MPEG-2 MP@H-14) and XDCAM HD422 at 50 Mbit/s (422P@HL).
constexpr RateRow RATES_25M[] = {{50, 4003}, {60, 4004}};
constexpr RateRow RATES_50M[] = {{50, 4074}, {60, 4073}};
// 35 Mbit/s (MP@HL), 720 lines.
constexpr RateRow RATES_35M_720[] = {{24, 4087}, {25, 4089}, {30, 4088}, {50, 4086}, {60, 4085}};

struct Rate1080Row
{
    bool interlaced;
    int fieldRate;
    int width1440;
    int otherWidth;
};

// 35 Mbit/s, 1080 lines (540 a field).
constexpr Rate1080Row RATES_35M_1080[] = {
    {true, 50, 4043, 4081},  {true, 60, 4044, 4080},  {false, 24, 4045, 4084},
    {false, 25, 4043, 4083}, {false, 30, 4044, 4082},
};

template <std::size_t N>
int byRate(const RateRow (&table)[N], int rate)
{
    const auto row = std::find_if(std::begin(table), std::end(table),
                                  [rate](const RateRow& r) { return r.fieldRate == rate; });
    return row != std::end(table) ? row->id : 0;
}

int refuse(const wchar_t* text)
{
    logEntry(LOG_TRACE, text);
    return 0;
}

} // namespace

int fieldRate(const EssenceTrackInfo& track)
{
    const std::int32_t numerator = track.editRate.numerator();
    const std::int32_t denominator = track.editRate.denominator();
    for (const FieldRateRow& row : FIELD_RATES)
        if (row.numerator == numerator && row.denominator == denominator)
            return track.video.frameLayout != 0 ? row.interlaced : row.progressive;
    return 0;
}

int resolutionId(const EssenceTrackInfo& track)
{
    const VideoAttributes& video = track.video;
    const int rate = fieldRate(track);
    int id = 0;
    switch (video.bitRate)
    {
    case 25000000:
        id = byRate(RATES_25M, rate);
        break;
    case 50000000:
        id = byRate(RATES_50M, rate);
        break;
    case 35000000:
        if (video.displayHeight == 720)
            id = byRate(RATES_35M_720, rate);
        else if (video.displayHeight == 1080 || video.displayHeight == 540)
        {
            const bool interlaced = video.frameLayout != 0;
            for (const Rate1080Row& row : RATES_35M_1080)
                if (row.interlaced == interlaced && row.fieldRate == rate)
                    id = video.displayWidth == 1440 ? row.width1440 : row.otherWidth;
        }
        else
            return refuse(L"Unexpected display height for input video.");
        break;
    default:
        return refuse(L"Unexpected bit rate in MPEG stream.");
    }
    return id != 0 ? id : refuse(L"Unexpected frame rate.");
}

} // namespace KEP::Halvorn
