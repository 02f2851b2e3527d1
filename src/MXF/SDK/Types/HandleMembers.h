#pragma once

#include "MXF/SDK/Types/Visitors/Visitor.h"

#include <memory>

// The members every value handle spells the same way. The Impl is copied, never shared: copying
// allocates a new one, assignment copies the bytes into the existing one.

// accept and clone, for a class with a visitor slot of its own.
#define MXF_SDK_TYPES_VISITABLE(Class)                                                             \
    void Class::accept(Visitors::Visitor& visitor) const                                           \
    {                                                                                              \
        visitor.visit(*this);                                                                      \
    }                                                                                              \
    void Class::accept(Visitors::NonConstVisitor& visitor)                                         \
    {                                                                                              \
        visitor.visit(*this);                                                                      \
    }                                                                                              \
    std::unique_ptr<SimpleDataType> Class::clone() const                                           \
    {                                                                                              \
        return std::make_unique<Class>(*this);                                                     \
    }

// The above, with copying, destruction and the wire form of a handle with an `impl_` that has
// `data` and `size`.
#define MXF_SDK_TYPES_HANDLE(Class, Base)                                                          \
    Class::Class(const Class& other) : Base(other), impl_(std::make_unique<Impl>(*other.impl_)) {} \
    Class& Class::operator=(const Class& other)                                                    \
    {                                                                                              \
        Base::operator=(other);                                                                    \
        *impl_ = *other.impl_;                                                                     \
        return *this;                                                                              \
    }                                                                                              \
    Class::~Class() = default;                                                                     \
    const Platform::Byte* Class::data() const                                                      \
    {                                                                                              \
        return impl_->data();                                                                      \
    }                                                                                              \
    Platform::UInt16 Class::size() const                                                           \
    {                                                                                              \
        return impl_->size();                                                                      \
    }                                                                                              \
    MXF_SDK_TYPES_VISITABLE(Class)
