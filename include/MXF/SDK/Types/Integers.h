#pragma once

#include "MXF/SDK/Platform/Types.h"
#include "MXF/SDK/Types/BaseType.h"

#include <memory>

namespace MXF::SDK::DataIO
{
class DataSource;
}

namespace MXF::SDK::Types
{

// Integers in their wire form, big-endian two's complement; `value` converts.
class Int8 final : public SimpleDataType
{
public:
    using ValueType = Platform::Int8;

    explicit Int8(ValueType value = 0);
    // An exact read of 1 byte.
    explicit Int8(DataIO::DataSource& source);
    Int8(const Int8& other);
    Int8& operator=(const Int8& other);
    ~Int8() override;

    ValueType value() const;
    void setValue(ValueType value);

    void accept(Visitors::Visitor& visitor) const override;
    void accept(Visitors::NonConstVisitor& visitor) override;
    const Platform::Byte* data() const override;
    Platform::UInt16 size() const override;
    std::unique_ptr<SimpleDataType> clone() const override;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

class Int16 final : public SimpleDataType
{
public:
    using ValueType = Platform::Int16;

    explicit Int16(ValueType value = 0);
    // An exact read of 2 bytes.
    explicit Int16(DataIO::DataSource& source);
    Int16(const Int16& other);
    Int16& operator=(const Int16& other);
    ~Int16() override;

    ValueType value() const;
    void setValue(ValueType value);

    void accept(Visitors::Visitor& visitor) const override;
    void accept(Visitors::NonConstVisitor& visitor) override;
    const Platform::Byte* data() const override;
    Platform::UInt16 size() const override;
    std::unique_ptr<SimpleDataType> clone() const override;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

class Int32 final : public SimpleDataType
{
public:
    using ValueType = Platform::Int32;

    explicit Int32(ValueType value = 0);
    // An exact read of 4 bytes.
    explicit Int32(DataIO::DataSource& source);
    Int32(const Int32& other);
    Int32& operator=(const Int32& other);
    ~Int32() override;

    ValueType value() const;
    void setValue(ValueType value);

    void accept(Visitors::Visitor& visitor) const override;
    void accept(Visitors::NonConstVisitor& visitor) override;
    const Platform::Byte* data() const override;
    Platform::UInt16 size() const override;
    std::unique_ptr<SimpleDataType> clone() const override;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

class Int64 : public SimpleDataType
{
public:
    using ValueType = Platform::Int64;

    explicit Int64(ValueType value = 0);
    // An exact read of 8 bytes.
    explicit Int64(DataIO::DataSource& source);
    Int64(const Int64& other);
    Int64& operator=(const Int64& other);
    ~Int64() override;

    ValueType value() const;
    void setValue(ValueType value);

    void accept(Visitors::Visitor& visitor) const override;
    void accept(Visitors::NonConstVisitor& visitor) override;
    const Platform::Byte* data() const override;
    Platform::UInt16 size() const override;
    std::unique_ptr<SimpleDataType> clone() const override;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

class UInt8 : public SimpleDataType
{
public:
    using ValueType = Platform::UInt8;

    explicit UInt8(ValueType value = 0);
    // An exact read of 1 byte.
    explicit UInt8(DataIO::DataSource& source);
    UInt8(const UInt8& other);
    UInt8& operator=(const UInt8& other);
    ~UInt8() override;

    ValueType value() const;
    void setValue(ValueType value);

    void accept(Visitors::Visitor& visitor) const override;
    void accept(Visitors::NonConstVisitor& visitor) override;
    const Platform::Byte* data() const override;
    Platform::UInt16 size() const override;
    std::unique_ptr<SimpleDataType> clone() const override;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

class UInt16 final : public SimpleDataType
{
public:
    using ValueType = Platform::UInt16;

    explicit UInt16(ValueType value = 0);
    // An exact read of 2 bytes.
    explicit UInt16(DataIO::DataSource& source);
    UInt16(const UInt16& other);
    UInt16& operator=(const UInt16& other);
    ~UInt16() override;

    ValueType value() const;
    void setValue(ValueType value);

    void accept(Visitors::Visitor& visitor) const override;
    void accept(Visitors::NonConstVisitor& visitor) override;
    const Platform::Byte* data() const override;
    Platform::UInt16 size() const override;
    std::unique_ptr<SimpleDataType> clone() const override;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

class UInt32 final : public SimpleDataType
{
public:
    using ValueType = Platform::UInt32;

    explicit UInt32(ValueType value = 0);
    // An exact read of 4 bytes.
    explicit UInt32(DataIO::DataSource& source);
    UInt32(const UInt32& other);
    UInt32& operator=(const UInt32& other);
    ~UInt32() override;

    ValueType value() const;
    void setValue(ValueType value);

    void accept(Visitors::Visitor& visitor) const override;
    void accept(Visitors::NonConstVisitor& visitor) override;
    const Platform::Byte* data() const override;
    Platform::UInt16 size() const override;
    std::unique_ptr<SimpleDataType> clone() const override;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

class UInt64 final : public SimpleDataType
{
public:
    using ValueType = Platform::UInt64;

    explicit UInt64(ValueType value = 0);
    // An exact read of 8 bytes.
    explicit UInt64(DataIO::DataSource& source);
    UInt64(const UInt64& other);
    UInt64& operator=(const UInt64& other);
    ~UInt64() override;

    ValueType value() const;
    void setValue(ValueType value);

    void accept(Visitors::Visitor& visitor) const override;
    void accept(Visitors::NonConstVisitor& visitor) override;
    const Platform::Byte* data() const override;
    Platform::UInt16 size() const override;
    std::unique_ptr<SimpleDataType> clone() const override;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

// A length in bytes or edit units (SMPTE 377M Length).
class Length final : public Int64
{
public:
    explicit Length(ValueType value = 0);
    explicit Length(DataIO::DataSource& source);

    void accept(Visitors::Visitor& visitor) const override;
    void accept(Visitors::NonConstVisitor& visitor) override;
    std::unique_ptr<SimpleDataType> clone() const override;
};

// A position in edit units (SMPTE 377M Position).
class Position final : public Int64
{
public:
    explicit Position(ValueType value = 0);
    explicit Position(DataIO::DataSource& source);

    void accept(Visitors::Visitor& visitor) const override;
    void accept(Visitors::NonConstVisitor& visitor) override;
    std::unique_ptr<SimpleDataType> clone() const override;
};

// SMPTE 377M Orientation: one byte of enumerated value.
class Orientation final : public UInt8
{
public:
    explicit Orientation(ValueType value = 0);
    explicit Orientation(DataIO::DataSource& source);

    void accept(Visitors::Visitor& visitor) const override;
    void accept(Visitors::NonConstVisitor& visitor) override;
    std::unique_ptr<SimpleDataType> clone() const override;
};

// SMPTE 377M SignalStandard: one byte of enumerated value.
class SignalStandard final : public UInt8
{
public:
    explicit SignalStandard(ValueType value = 0);
    explicit SignalStandard(DataIO::DataSource& source);

    void accept(Visitors::Visitor& visitor) const override;
    void accept(Visitors::NonConstVisitor& visitor) override;
    std::unique_ptr<SimpleDataType> clone() const override;
};

} // namespace MXF::SDK::Types
