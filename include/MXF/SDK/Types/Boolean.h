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

// One byte; any byte but 0 is true. Made from a bool it holds 1 or 0; read from a source it keeps
// the byte it found.
class Boolean final : public SimpleDataType
{
public:
    explicit Boolean(bool value = false);
    explicit Boolean(DataIO::DataSource& source);
    Boolean(const Boolean& other);
    Boolean& operator=(const Boolean& other);
    ~Boolean() override;

    void accept(Visitors::Visitor& visitor) const override;
    void accept(Visitors::NonConstVisitor& visitor) override;
    const Platform::Byte* data() const override;
    Platform::UInt16 size() const override;
    std::unique_ptr<SimpleDataType> clone() const override;

    bool value() const;
    void setValue(bool value);

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace MXF::SDK::Types
