#pragma once

#include "MXF/SDK/Platform/Types.h"
#include "MXF/SDK/Types/BaseType.h"

#include <memory>

namespace MXF::SDK::DataIO
{
class BoundedDataSource;
}

namespace MXF::SDK::Templates
{
template <typename T>
class Singleton;
}

namespace MXF::SDK::Types::Factories
{

// Builds values from their type number (TypeIdentifiers) and a source bounded to exactly the
// value: types of variable size take every remaining byte. One for the process; register creators
// at start-up, before values are made on several threads.
class BaseTypeFactory
{
public:
    using Creator = std::unique_ptr<BaseType> (*)(DataIO::BoundedDataSource& source);
    using CollectionCreator = std::unique_ptr<BaseType> (*)(DataIO::BoundedDataSource& source,
                                                            Platform::UInt32 elementType);

    static BaseTypeFactory& instance();

    // Every simple type: 2, 3, 5 to 9 and 11 to 39. Delta and index entries (31, 32) are kept as
    // Unknown until the index table layer registers its own. Another number throws NoFactory "No
    // Factory for type".
    std::unique_ptr<BaseType> create(Platform::UInt32 type,
                                     DataIO::BoundedDataSource& source) const;
    // Array (0) and Batch (1) of `elementType`; another number throws NoFactory "No Factory for
    // type".
    std::unique_ptr<BaseType> createCollection(Platform::UInt32 type,
                                               DataIO::BoundedDataSource& source,
                                               Platform::UInt32 elementType) const;

    // Add or replace a creator.
    void registerType(Platform::UInt32 type, Creator creator);
    void registerCollectionType(Platform::UInt32 type, CollectionCreator creator);

    BaseTypeFactory(const BaseTypeFactory&) = delete;
    BaseTypeFactory& operator=(const BaseTypeFactory&) = delete;

private:
    template <typename>
    friend class Templates::Singleton;

    BaseTypeFactory();
    ~BaseTypeFactory();

    struct Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace MXF::SDK::Types::Factories
