#pragma once

namespace MXF::SDK::Types::Visitors
{

// Root of everything a visitor can be sent to.
class Visitable
{
public:
    virtual ~Visitable() = 0;

protected:
    Visitable() = default;
    Visitable(const Visitable&) = default;
    Visitable& operator=(const Visitable&) = default;
};

inline Visitable::~Visitable() = default;

} // namespace MXF::SDK::Types::Visitors
