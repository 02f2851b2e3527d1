#include "MXF/SDK/Types/Collection.h"
#include "MXF/SDK/Types/Integers.h"
#include "MXF/SDK/Types/LocalTag.h"
#include "MXF/SDK/Types/Rational.h"
#include "MXF/SDK/Types/Reference.h"
#include "MXF/SDK/Types/UID.h"
#include "MXF/SDK/Types/Visitors/Visitor.h"
#include "TypesTestSupport.h"

#include <gtest/gtest.h>

using namespace MXF::SDK;
using namespace MXF::SDK::Types;
using namespace MXF::SDK::Types::Visitors;
using namespace Halvorn::Test;

namespace
{

const Platform::Byte SIXTEEN[16] = {0x06, 0x0e, 0x2b, 0x34, 4, 1, 1, 1, 1, 2, 3, 4, 5, 6, 7, 8};

} // namespace

TEST(GetVisitor, FindsOnlyTheExactClass)
{
    Length length(5);
    const BaseType& constLength = length;
    GetVisitor<const Length> constVisitor;
    constLength.accept(constVisitor);
    EXPECT_EQ(constVisitor.result(), &length);

    // A Length has its own slot: it is not an Int64 to a visitor.
    EXPECT_EQ(getAs<Int64>(constLength), nullptr);
    EXPECT_EQ(getAs<Length>(constLength), &length);
    EXPECT_EQ(getAs<Position>(constLength), nullptr);

    // The mutating visit hands out a writable value.
    BaseType& value = length;
    GetVisitor<Length> visitor;
    value.accept(visitor);
    ASSERT_EQ(visitor.result(), &length);
    visitor.result()->setValue(9);
    EXPECT_EQ(length.value(), 9);

    const UniversalLabel label(SIXTEEN);
    EXPECT_EQ(getAs<UUID>(label), nullptr);
    EXPECT_EQ(getAs<UniversalLabel>(label), &label);
}

TEST(GetVisitor, KinFindTheAbstractClasses)
{
    UInt16 number(1);
    UniversalLabel label(SIXTEEN);
    UMID32 umid(std::vector<Platform::Byte>(32, 1).data());
    StrongReference strong(SIXTEEN);
    LocalTag tag(0x3c0a);
    Batch batch;

    EXPECT_EQ(asSimpleDataType(number), &number);
    EXPECT_EQ(asSimpleDataType(tag), &tag);
    EXPECT_EQ(asSimpleDataType(batch), nullptr);
    EXPECT_EQ(asCollection(batch), &batch);
    EXPECT_EQ(asCollection(static_cast<const BaseType&>(number)), nullptr);
    EXPECT_EQ(asUID(label), &label);
    EXPECT_EQ(asUID(umid), &umid);
    EXPECT_EQ(asUID(tag), nullptr);
    EXPECT_EQ(asUID(strong), nullptr);
    EXPECT_EQ(asReference(strong), &strong);
    EXPECT_EQ(asReference(static_cast<const BaseType&>(label)), nullptr);
}

TEST(SerializationVisitor, WritesWhatItMeets)
{
    DataIO::Memory::MemoryDataSink sink;
    SerializationVisitor visitor(sink);
    Rational(1, 2).accept(visitor);
    LocalTag(0x3c0a).accept(visitor);
    Batch batch;
    batch.append(std::make_unique<UInt8>(0xab));
    batch.accept(visitor);
    EXPECT_EQ(sink.data(),
              Bytes({0, 0, 0, 1, 0, 0, 0, 2, 0x3c, 0x0a, 0, 0, 0, 1, 0, 0, 0, 1, 0xab}));
}
