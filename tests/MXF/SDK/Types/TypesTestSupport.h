#pragma once

#include "MXF/SDK/DataIO/DataSource.h"
#include "MXF/SDK/DataIO/Memory/MemoryDataSink.h"
#include "MXF/SDK/DataIO/Memory/MemoryDataSource.h"
#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/Types/BaseType.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

namespace Halvorn::Test
{

using Bytes = std::vector<std::uint8_t>;

// The message of the `Exception` that `action` throws; another exception type fails the test.
template <typename Exception, typename Action>
std::wstring messageOf(Action&& action)
{
    try
    {
        action();
    }
    catch (const Exception& e)
    {
        return e.message();
    }
    return L"<no exception>";
}

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

// Hands out at most `piece` bytes a read, as a stream that arrives in chunks does.
class ChunkedSource : public MXF::SDK::DataIO::BoundedDataSource
{
public:
    ChunkedSource(Bytes bytes, std::size_t piece) : bytes_(std::move(bytes)), piece_(piece) {}

    std::uint64_t position() const override { return position_; }
    std::uint64_t remaining() const override { return bytes_.size() - position_; }
    std::uint64_t read(void* buffer, std::uint64_t size) override
    {
        const auto count = std::min<std::uint64_t>({size, piece_, remaining()});
        std::copy_n(bytes_.begin() + static_cast<std::ptrdiff_t>(position_), count,
                    static_cast<std::uint8_t*>(buffer));
        position_ += count;
        return count;
    }
    std::uint64_t skip(std::uint64_t size) override
    {
        const auto count = std::min(size, remaining());
        position_ += count;
        return count;
    }
    std::uint64_t skipToEnd() override { return position_ = bytes_.size(); }

private:
    Bytes bytes_;
    std::size_t piece_;
    std::uint64_t position_ = 0;
};

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
