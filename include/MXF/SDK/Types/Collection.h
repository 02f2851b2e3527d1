#pragma once

#include "MXF/SDK/Platform/Types.h"
#include "MXF/SDK/Types/BaseType.h"

#include <cstddef>
#include <memory>

namespace MXF::SDK::DataIO
{
class BoundedDataSource;
}

namespace MXF::SDK::Types
{

// Items of one size behind the SMPTE 377M batch and array header: the item count, then the item
// size, each a 32-bit big-endian number, then the items back to back. Array and Batch share
// the layout; the metadata layer gives them their meaning.
class Collection : public BaseType
{
public:
    ~Collection() override;

    // Writes the count and the item size as UInt32 values, then each item.
    void serialize(DataIO::DataSink& sink) const override;
    // itemCount · itemSize + 8, in 16 bits: a collection longer than that wraps.
    virtual Platform::UInt16 size() const;
    virtual std::unique_ptr<Collection> clone() const = 0;

    Platform::UInt32 itemCount() const;
    Platform::UInt32 itemSize() const;
    // Throws IndexOutOfBounds "Exceptions::IndexOutOfBounds" from itemCount on.
    const BaseType& at(std::size_t index) const;
    BaseType& at(std::size_t index);

    // Takes ownership. An element of another size than itemSize throws InvalidElement "Appending
    // an invalid element", except in an empty collection whose itemSize is 0: that one takes the
    // element's size.
    void append(std::unique_ptr<BaseType> element);
    // The element's size must be itemSize, else InvalidElement "Trying to insert an invalid
    // element"; an index above itemCount throws IndexOutOfBounds "Trying to insert an element past
    // the end of the data". Inserting at itemCount appends.
    void insert(std::size_t index, std::unique_ptr<BaseType> element);
    // Destroys the element. Throws IndexOutOfBounds "Trying to remove an element beyond the end of
    // data" from itemCount on.
    void remove(std::size_t index);

protected:
    explicit Collection(Platform::UInt32 itemSize);
    // Reads the header, then makes each item with BaseTypeFactory from `elementType` and exactly
    // itemSize bytes of the source. Throws InvalidLength:
    //   "Invalid data size in collection. Not enough data to read number of elements",
    //   "Invalid data size in collection. Not enough data to read element entry size",
    //   "Invalid data size in collection. Not enough data to read N elements of size S", after
    //   consuming what is left of the source,
    //   "Invalid data size in Value to create an element in the collection." for an item that is
    //   short of its bytes or doesn't take all of them.
    Collection(DataIO::BoundedDataSource& source, Platform::UInt32 elementType);
    // Copies every item.
    Collection(const Collection& other);
    Collection& operator=(const Collection& other);

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

class Array final : public Collection
{
public:
    explicit Array(Platform::UInt32 itemSize = 0);
    Array(DataIO::BoundedDataSource& source, Platform::UInt32 elementType);

    void accept(Visitors::Visitor& visitor) const override;
    void accept(Visitors::NonConstVisitor& visitor) override;
    std::unique_ptr<Collection> clone() const override;
};

class Batch final : public Collection
{
public:
    explicit Batch(Platform::UInt32 itemSize = 0);
    Batch(DataIO::BoundedDataSource& source, Platform::UInt32 elementType);

    void accept(Visitors::Visitor& visitor) const override;
    void accept(Visitors::NonConstVisitor& visitor) override;
    std::unique_ptr<Collection> clone() const override;
};

} // namespace MXF::SDK::Types
