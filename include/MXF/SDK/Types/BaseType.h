#pragma once

#include "MXF/SDK/Platform/Types.h"
#include "MXF/SDK/Types/Visitors/Visitable.h"

#include <memory>

namespace MXF::SDK::DataIO
{
class DataSink;
}

namespace MXF::SDK::Types
{

namespace Visitors
{
class Visitor;
class NonConstVisitor;
} // namespace Visitors

// A typed value of a metadata element. Reach the concrete type through a visitor (GetVisitor<T>),
// never by a cast of your own.
class BaseType : public Visitors::Visitable
{
public:
    ~BaseType() override = default;

    virtual void accept(Visitors::Visitor& visitor) const = 0;
    virtual void accept(Visitors::NonConstVisitor& visitor) = 0;
    // Writes the wire form, in file byte order.
    virtual void serialize(DataIO::DataSink& sink) const = 0;

protected:
    BaseType() = default;
    BaseType(const BaseType&) = default;
    BaseType& operator=(const BaseType&) = default;
};

// A value that keeps its wire form, in file byte order, so that writing it is a copy of bytes;
// typed accessors of the subclasses convert on the way out.
class SimpleDataType : public BaseType
{
public:
    // Writes `size` bytes from `data`.
    void serialize(DataIO::DataSink& sink) const override;

    // The wire form; never null, also when `size` is 0.
    virtual const Platform::Byte* data() const = 0;
    // Throws InvalidLength "Type size exceeded" for a value of more than 65535 bytes.
    virtual Platform::UInt16 size() const = 0;
    virtual std::unique_ptr<SimpleDataType> clone() const = 0;

protected:
    SimpleDataType() = default;
    SimpleDataType(const SimpleDataType&) = default;
    SimpleDataType& operator=(const SimpleDataType&) = default;
};

} // namespace MXF::SDK::Types
