#pragma once

// Suites outside the toolkit's that still include this header get the helpers they used.
#include "TestSupport.h"

namespace Halvorn::Test
{
using namespace MXF::SDK::DataIO;
using Support::Bytes;
using Support::forEachSplit;
using Support::hexBytes;
using Support::operator+;
using Support::PiecewiseSource;
using Support::testData;
using Support::thrownMessage;

inline Bytes fileBytes(const std::string& path)
{
    return Support::bytesAt(path);
}
} // namespace Halvorn::Test
