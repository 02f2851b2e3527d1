#pragma once

#include "MXF/SDK/DataIO/Memory/MemoryDataSink.h"
#include "MXF/SDK/DataIO/Memory/MemoryDataSource.h"
#include "MXF/SDK/Types/BaseType.h"
#include "TestSupport.h"

#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

namespace Halvorn::Test
{

using Support::Bytes;
using Support::operator+;
using Support::PiecewiseSource;
using Support::thrownMessage;

inline Bytes serialized(const MXF::SDK::Types::BaseType& value)
{
    MXF::SDK::DataIO::Memory::MemoryDataSink sink;
    value.serialize(sink);
    return sink.data();
}

inline MXF::SDK::DataIO::Memory::MemoryDataSource sourceOf(const Bytes& bytes)
{
    return MXF::SDK::DataIO::Memory::MemoryDataSource(bytes.data(), bytes.size());
}

// Sets (or clears, for nullopt) an environment variable for one scope.
class ScopedEnvironment
{
public:
    ScopedEnvironment(const char* name, std::optional<std::string> value) : name_(name)
    {
        if (const char* old = std::getenv(name))
            saved_ = old;
        if (value)
            ::setenv(name, value->c_str(), 1);
        else
            ::unsetenv(name);
    }
    ~ScopedEnvironment()
    {
        if (saved_)
            ::setenv(name_.c_str(), saved_->c_str(), 1);
        else
            ::unsetenv(name_.c_str());
    }
    ScopedEnvironment(const ScopedEnvironment&) = delete;
    ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

private:
    std::string name_;
    std::optional<std::string> saved_;
};

} // namespace Halvorn::Test
