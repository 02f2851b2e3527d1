#include "PackWriting.h"

#include "MXF/SDK/ByteCoders/BERCoder.h"
#include "MXF/SDK/Exceptions/Exceptions.h"

#include <string>

namespace MXF::SDK::Packs::Internal
{

void writeLength(DataIO::DataSink& sink, Platform::UInt64 length, Platform::UInt8 lengthSize)
{
    using ByteCoders::BERCoder;
    BERCoder::validateSize(lengthSize);
    // Above 2^63 encodedSize answers 1; no pack comes near that, but a wrong length must not pass.
    if (length > INT64_MAX || BERCoder::encodedSize(length) > lengthSize)
        MXF_SDK_THROW(Exceptions::InvalidLength, "Pack length " + std::to_string(length) +
                                                     " does not fit a BER length of " +
                                                     std::to_string(lengthSize) + " bytes");
    Platform::Byte bytes[9];
    BERCoder::encode(length, lengthSize, bytes);
    sink.write(bytes, lengthSize);
}

} // namespace MXF::SDK::Packs::Internal
