#pragma once

#include "MXF/SDK/Types/BaseType.h"

#include <type_traits>

namespace MXF::SDK::DataIO
{
class DataSink;
}

namespace MXF::SDK::Types
{

class Array;
class Batch;
class Boolean;
class Collection;
class DataStream;
class DataValue;
class ISO7String;
class Int16;
class Int32;
class Int64;
class Int8;
class J2KCodingStyleDefault;
class J2KPictureComponent;
class J2KQuantisationDefault;
class Length;
class LocalTag;
class Orientation;
class Position;
class ProductVersion;
class RGBALayout;
class Rational;
class Reference;
class SignalStandard;
class StrongReference;
class Timestamp;
class UID;
class UInt16;
class UInt32;
class UInt64;
class UInt8;
class UMID32;
class UMID64;
class UTF16;
class UTF16String;
class UUID;
class Unknown;
class UniversalLabel;
class VersionType;
class WeakReference;

namespace Visitors
{

// One slot a concrete value class. A class has its own slot even where it derives from another
// concrete class: a Length is not visited as an Int64.
class Visitor
{
public:
    virtual ~Visitor() = default;
    virtual void visit(const J2KQuantisationDefault& value) = 0;
    virtual void visit(const J2KCodingStyleDefault& value) = 0;
    virtual void visit(const J2KPictureComponent& value) = 0;
    virtual void visit(const DataValue& value) = 0;
    virtual void visit(const SignalStandard& value) = 0;
    virtual void visit(const Orientation& value) = 0;
    virtual void visit(const RGBALayout& value) = 0;
    virtual void visit(const StrongReference& value) = 0;
    virtual void visit(const WeakReference& value) = 0;
    virtual void visit(const Unknown& value) = 0;
    virtual void visit(const VersionType& value) = 0;
    virtual void visit(const UUID& value) = 0;
    virtual void visit(const UTF16String& value) = 0;
    virtual void visit(const UTF16& value) = 0;
    virtual void visit(const UniversalLabel& value) = 0;
    virtual void visit(const UMID64& value) = 0;
    virtual void visit(const UMID32& value) = 0;
    virtual void visit(const UInt8& value) = 0;
    virtual void visit(const UInt64& value) = 0;
    virtual void visit(const UInt32& value) = 0;
    virtual void visit(const UInt16& value) = 0;
    virtual void visit(const Timestamp& value) = 0;
    virtual void visit(const Rational& value) = 0;
    virtual void visit(const ProductVersion& value) = 0;
    virtual void visit(const Position& value) = 0;
    virtual void visit(const LocalTag& value) = 0;
    virtual void visit(const Length& value) = 0;
    virtual void visit(const ISO7String& value) = 0;
    virtual void visit(const Int8& value) = 0;
    virtual void visit(const Int64& value) = 0;
    virtual void visit(const Int32& value) = 0;
    virtual void visit(const Int16& value) = 0;
    virtual void visit(const DataStream& value) = 0;
    virtual void visit(const Boolean& value) = 0;
    virtual void visit(const Batch& value) = 0;
    virtual void visit(const Array& value) = 0;
};

// The mutating visit.
class NonConstVisitor
{
public:
    virtual ~NonConstVisitor() = default;
    virtual void visit(J2KQuantisationDefault& value) = 0;
    virtual void visit(J2KCodingStyleDefault& value) = 0;
    virtual void visit(J2KPictureComponent& value) = 0;
    virtual void visit(DataValue& value) = 0;
    virtual void visit(StrongReference& value) = 0;
    virtual void visit(WeakReference& value) = 0;
    virtual void visit(Unknown& value) = 0;
    virtual void visit(VersionType& value) = 0;
    virtual void visit(UUID& value) = 0;
    virtual void visit(UTF16String& value) = 0;
    virtual void visit(UTF16& value) = 0;
    virtual void visit(UniversalLabel& value) = 0;
    virtual void visit(UMID64& value) = 0;
    virtual void visit(UMID32& value) = 0;
    virtual void visit(UInt8& value) = 0;
    virtual void visit(UInt64& value) = 0;
    virtual void visit(UInt32& value) = 0;
    virtual void visit(UInt16& value) = 0;
    virtual void visit(Timestamp& value) = 0;
    virtual void visit(SignalStandard& value) = 0;
    virtual void visit(RGBALayout& value) = 0;
    virtual void visit(Rational& value) = 0;
    virtual void visit(ProductVersion& value) = 0;
    virtual void visit(Position& value) = 0;
    virtual void visit(Orientation& value) = 0;
    virtual void visit(LocalTag& value) = 0;
    virtual void visit(Length& value) = 0;
    virtual void visit(ISO7String& value) = 0;
    virtual void visit(Int8& value) = 0;
    virtual void visit(Int64& value) = 0;
    virtual void visit(Int32& value) = 0;
    virtual void visit(Int16& value) = 0;
    virtual void visit(DataStream& value) = 0;
    virtual void visit(Boolean& value) = 0;
    virtual void visit(Batch& value) = 0;
    virtual void visit(Array& value) = 0;
};

// Empty bodies for every slot: concrete visitors derive from these and override what they need.
class NullVisitor : public Visitor
{
public:
    void visit(const J2KQuantisationDefault&) override {}
    void visit(const J2KCodingStyleDefault&) override {}
    void visit(const J2KPictureComponent&) override {}
    void visit(const DataValue&) override {}
    void visit(const SignalStandard&) override {}
    void visit(const Orientation&) override {}
    void visit(const RGBALayout&) override {}
    void visit(const StrongReference&) override {}
    void visit(const WeakReference&) override {}
    void visit(const Unknown&) override {}
    void visit(const VersionType&) override {}
    void visit(const UUID&) override {}
    void visit(const UTF16String&) override {}
    void visit(const UTF16&) override {}
    void visit(const UniversalLabel&) override {}
    void visit(const UMID64&) override {}
    void visit(const UMID32&) override {}
    void visit(const UInt8&) override {}
    void visit(const UInt64&) override {}
    void visit(const UInt32&) override {}
    void visit(const UInt16&) override {}
    void visit(const Timestamp&) override {}
    void visit(const Rational&) override {}
    void visit(const ProductVersion&) override {}
    void visit(const Position&) override {}
    void visit(const LocalTag&) override {}
    void visit(const Length&) override {}
    void visit(const ISO7String&) override {}
    void visit(const Int8&) override {}
    void visit(const Int64&) override {}
    void visit(const Int32&) override {}
    void visit(const Int16&) override {}
    void visit(const DataStream&) override {}
    void visit(const Boolean&) override {}
    void visit(const Batch&) override {}
    void visit(const Array&) override {}
};

class NonConstNullVisitor : public NonConstVisitor
{
public:
    void visit(J2KQuantisationDefault&) override {}
    void visit(J2KCodingStyleDefault&) override {}
    void visit(J2KPictureComponent&) override {}
    void visit(DataValue&) override {}
    void visit(StrongReference&) override {}
    void visit(WeakReference&) override {}
    void visit(Unknown&) override {}
    void visit(VersionType&) override {}
    void visit(UUID&) override {}
    void visit(UTF16String&) override {}
    void visit(UTF16&) override {}
    void visit(UniversalLabel&) override {}
    void visit(UMID64&) override {}
    void visit(UMID32&) override {}
    void visit(UInt8&) override {}
    void visit(UInt64&) override {}
    void visit(UInt32&) override {}
    void visit(UInt16&) override {}
    void visit(Timestamp&) override {}
    void visit(SignalStandard&) override {}
    void visit(RGBALayout&) override {}
    void visit(Rational&) override {}
    void visit(ProductVersion&) override {}
    void visit(Position&) override {}
    void visit(Orientation&) override {}
    void visit(LocalTag&) override {}
    void visit(Length&) override {}
    void visit(ISO7String&) override {}
    void visit(Int8&) override {}
    void visit(Int64&) override {}
    void visit(Int32&) override {}
    void visit(Int16&) override {}
    void visit(DataStream&) override {}
    void visit(Boolean&) override {}
    void visit(Batch&) override {}
    void visit(Array&) override {}
};

// The toolkit's checked cast: after `value.accept(visitor)`, `result` points at the value if it
// is exactly a `T`, and is null otherwise. `GetVisitor<const T>` visits read-only values.
template <typename T>
class GetVisitor : public std::conditional_t<std::is_const_v<T>, NullVisitor, NonConstNullVisitor>
{
    using Base = std::conditional_t<std::is_const_v<T>, NullVisitor, NonConstNullVisitor>;

public:
    using Base::visit;
    void visit(T& value) override { result_ = &value; }
    T* result() const noexcept { return result_; }

private:
    T* result_ = nullptr;
};

// GetVisitor in one call: null when `value` is not exactly a `T`.
template <typename T>
const T* getAs(const BaseType& value)
{
    GetVisitor<const T> visitor;
    value.accept(visitor);
    return visitor.result();
}
template <typename T>
T* getAs(BaseType& value)
{
    GetVisitor<T> visitor;
    value.accept(visitor);
    return visitor.result();
}

// Kin of getAs for the abstract classes of the tree: null when `value` is not one of them.
const SimpleDataType* asSimpleDataType(const BaseType& value);
SimpleDataType* asSimpleDataType(BaseType& value);
const Collection* asCollection(const BaseType& value);
Collection* asCollection(BaseType& value);
// UniversalLabel, UUID, UMID32 or UMID64.
const UID* asUID(const BaseType& value);
UID* asUID(BaseType& value);
// StrongReference or WeakReference.
const Reference* asReference(const BaseType& value);
Reference* asReference(BaseType& value);

// Serialises every value it meets on the sink it was given.
class SerializationVisitor : public Visitor
{
public:
    explicit SerializationVisitor(DataIO::DataSink& sink) : sink_(sink) {}

    void visit(const J2KQuantisationDefault& value) override;
    void visit(const J2KCodingStyleDefault& value) override;
    void visit(const J2KPictureComponent& value) override;
    void visit(const DataValue& value) override;
    void visit(const SignalStandard& value) override;
    void visit(const Orientation& value) override;
    void visit(const RGBALayout& value) override;
    void visit(const StrongReference& value) override;
    void visit(const WeakReference& value) override;
    void visit(const Unknown& value) override;
    void visit(const VersionType& value) override;
    void visit(const UUID& value) override;
    void visit(const UTF16String& value) override;
    void visit(const UTF16& value) override;
    void visit(const UniversalLabel& value) override;
    void visit(const UMID64& value) override;
    void visit(const UMID32& value) override;
    void visit(const UInt8& value) override;
    void visit(const UInt64& value) override;
    void visit(const UInt32& value) override;
    void visit(const UInt16& value) override;
    void visit(const Timestamp& value) override;
    void visit(const Rational& value) override;
    void visit(const ProductVersion& value) override;
    void visit(const Position& value) override;
    void visit(const LocalTag& value) override;
    void visit(const Length& value) override;
    void visit(const ISO7String& value) override;
    void visit(const Int8& value) override;
    void visit(const Int64& value) override;
    void visit(const Int32& value) override;
    void visit(const Int16& value) override;
    void visit(const DataStream& value) override;
    void visit(const Boolean& value) override;
    void visit(const Batch& value) override;
    void visit(const Array& value) override;

private:
    DataIO::DataSink& sink_;
};

} // namespace Visitors
} // namespace MXF::SDK::Types
