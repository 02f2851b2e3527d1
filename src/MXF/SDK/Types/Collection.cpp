#include "MXF/SDK/Types/Collection.h"

#include "Allocation.h"
#include "HandleMembers.h"
#include "MXF/SDK/DataIO/DataSource.h"
#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/Templates/SafeCast.h"
#include "MXF/SDK/Types/Factories/BaseTypeFactory.h"
#include "MXF/SDK/Types/Integers.h"

#include <algorithm>
#include <string>
#include <vector>

namespace MXF::SDK::Types
{

namespace
{

// The size an item takes on the wire.
Platform::UInt32 sizeOf(const BaseType& item)
{
    if (const SimpleDataType* simple = Visitors::asSimpleDataType(item))
        return simple->size();
    return Visitors::asCollection(item)->size();
}

std::unique_ptr<BaseType> cloneOf(const BaseType& item)
{
    if (const SimpleDataType* simple = Visitors::asSimpleDataType(item))
        return simple->clone();
    return Visitors::asCollection(item)->clone();
}

// Exactly `length` bytes of a source, from where it stands: one item of a collection.
class Window final : public DataIO::BoundedDataSource
{
public:
    Window(DataIO::DataSource& source, Platform::UInt64 length)
        : source_(source), end_(source.position() + length)
    {
    }

    Platform::UInt64 position() const override { return source_.position(); }
    Platform::UInt64 remaining() const override
    {
        const Platform::UInt64 at = source_.position();
        return at < end_ ? end_ - at : 0;
    }
    Platform::UInt64 read(void* buffer, Platform::UInt64 size) override
    {
        return source_.read(buffer, std::min(size, remaining()));
    }
    Platform::UInt64 skip(Platform::UInt64 size) override
    {
        return source_.skip(std::min(size, remaining()));
    }
    Platform::UInt64 skipToEnd() override
    {
        source_.skip(remaining());
        return position();
    }

private:
    DataIO::DataSource& source_;
    Platform::UInt64 end_;
};

[[noreturn]] void shortElement()
{
    MXF_SDK_THROW(Exceptions::InvalidLength,
                  "Invalid data size in Value to create an element in the collection.");
}

} // namespace

struct Collection::Impl : Internal::ManagedObject
{
    std::vector<std::unique_ptr<BaseType>, Internal::ManagedAllocator<std::unique_ptr<BaseType>>>
        items;
    Platform::UInt32 itemSize = 0;

    explicit Impl(Platform::UInt32 size) : itemSize(size) {}
    Impl(const Impl& other) : itemSize(other.itemSize)
    {
        items.reserve(other.items.size());
        for (const auto& item : other.items)
            items.push_back(cloneOf(*item));
    }
    Impl& operator=(const Impl& other)
    {
        Impl copy(other);
        items.swap(copy.items);
        itemSize = other.itemSize;
        return *this;
    }

    void checkIndex(std::size_t index, const char* text) const
    {
        if (index >= items.size())
            MXF_SDK_THROW(Exceptions::IndexOutOfBounds, text);
    }
};

Collection::Collection(Platform::UInt32 itemSize) : impl_(std::make_unique<Impl>(itemSize)) {}

Collection::Collection(DataIO::BoundedDataSource& source, Platform::UInt32 elementType)
    : impl_(std::make_unique<Impl>(0))
{
    if (source.remaining() < 4)
        MXF_SDK_THROW(
            Exceptions::InvalidLength,
            "Invalid data size in collection. Not enough data to read number of elements");
    const Platform::UInt32 count = Types::UInt32(source).value();
    if (source.remaining() < 4)
        MXF_SDK_THROW(
            Exceptions::InvalidLength,
            "Invalid data size in collection. Not enough data to read element entry size");
    const Platform::UInt32 size = Types::UInt32(source).value();
    if (source.remaining() < Platform::UInt64(count) * size)
    {
        source.skipToEnd();
        MXF_SDK_THROW(Exceptions::InvalidLength,
                      "Invalid data size in collection. Not enough data to read " +
                          std::to_string(count) + " elements of size " + std::to_string(size));
    }
    // No value is made of no bytes; without this a count from a damaged file would make
    // billions of empty items.
    if (count > 0 && size == 0)
        shortElement();

    impl_->itemSize = size;
    impl_->items.reserve(count);
    const auto& factory = Factories::BaseTypeFactory::instance();
    for (Platform::UInt32 i = 0; i < count; ++i)
    {
        Window item(source, size);
        std::unique_ptr<BaseType> element;
        try
        {
            element = factory.create(elementType, item);
        }
        catch (const Exceptions::InvalidLength&)
        {
            shortElement();
        }
        if (item.remaining() != 0 || sizeOf(*element) != size)
            shortElement();
        impl_->items.push_back(std::move(element));
    }
}

Collection::Collection(const Collection& other)
    : BaseType(other), impl_(std::make_unique<Impl>(*other.impl_))
{
}

Collection& Collection::operator=(const Collection& other)
{
    BaseType::operator=(other);
    *impl_ = *other.impl_;
    return *this;
}

Collection::~Collection() = default;

void Collection::serialize(DataIO::DataSink& sink) const
{
    Types::UInt32(itemCount()).serialize(sink);
    Types::UInt32(itemSize()).serialize(sink);
    for (const auto& item : impl_->items)
        item->serialize(sink);
}

Platform::UInt16 Collection::size() const
{
    return static_cast<Platform::UInt16>(itemCount() * itemSize() + 8);
}

Platform::UInt32 Collection::itemCount() const
{
    return Templates::SafeCast<Platform::UInt32>(impl_->items.size());
}

Platform::UInt32 Collection::itemSize() const
{
    return impl_->itemSize;
}

const BaseType& Collection::at(std::size_t index) const
{
    impl_->checkIndex(index, "Exceptions::IndexOutOfBounds");
    return *impl_->items[index];
}

BaseType& Collection::at(std::size_t index)
{
    impl_->checkIndex(index, "Exceptions::IndexOutOfBounds");
    return *impl_->items[index];
}

void Collection::append(std::unique_ptr<BaseType> element)
{
    if (!element)
        MXF_SDK_THROW(Exceptions::InvalidElement, "Appending an invalid element");
    const Platform::UInt32 size = sizeOf(*element);
    if (size != impl_->itemSize)
    {
        if (!impl_->items.empty() || impl_->itemSize != 0)
            MXF_SDK_THROW(Exceptions::InvalidElement, "Appending an invalid element");
        impl_->itemSize = size;
    }
    impl_->items.push_back(std::move(element));
}

void Collection::insert(std::size_t index, std::unique_ptr<BaseType> element)
{
    if (!element || sizeOf(*element) != impl_->itemSize)
        MXF_SDK_THROW(Exceptions::InvalidElement, "Trying to insert an invalid element");
    if (index > impl_->items.size())
        MXF_SDK_THROW(Exceptions::IndexOutOfBounds,
                      "Trying to insert an element past the end of the data");
    impl_->items.insert(impl_->items.begin() + static_cast<std::ptrdiff_t>(index),
                        std::move(element));
}

void Collection::remove(std::size_t index)
{
    impl_->checkIndex(index, "Trying to remove an element beyond the end of data");
    impl_->items.erase(impl_->items.begin() + static_cast<std::ptrdiff_t>(index));
}

Array::Array(Platform::UInt32 itemSize) : Collection(itemSize) {}

Array::Array(DataIO::BoundedDataSource& source, Platform::UInt32 elementType)
    : Collection(source, elementType)
{
}

void Array::accept(Visitors::Visitor& visitor) const
{
    visitor.visit(*this);
}

void Array::accept(Visitors::NonConstVisitor& visitor)
{
    visitor.visit(*this);
}

std::unique_ptr<Collection> Array::clone() const
{
    return std::make_unique<Array>(*this);
}

Batch::Batch(Platform::UInt32 itemSize) : Collection(itemSize) {}

Batch::Batch(DataIO::BoundedDataSource& source, Platform::UInt32 elementType)
    : Collection(source, elementType)
{
}

void Batch::accept(Visitors::Visitor& visitor) const
{
    visitor.visit(*this);
}

void Batch::accept(Visitors::NonConstVisitor& visitor)
{
    visitor.visit(*this);
}

std::unique_ptr<Collection> Batch::clone() const
{
    return std::make_unique<Batch>(*this);
}

} // namespace MXF::SDK::Types
