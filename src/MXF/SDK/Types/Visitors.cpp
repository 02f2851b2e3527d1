#include "AllTypes.h"
#include "MXF/SDK/Types/Visitors/Visitor.h"
#include "TypeList.h"

#include <type_traits>

namespace MXF::SDK::Types::Visitors
{

namespace
{

// `Class` with the constness of `Result`.
template <typename Result, typename Class>
using Like = std::conditional_t<std::is_const_v<Result>, const Class, Class>;

// Points at any value of a class derived from `Result`, which may be abstract.
template <typename Result>
class GetBaseVisitor final
    : public std::conditional_t<std::is_const_v<Result>, Visitor, NonConstVisitor>
{
public:
#define MXF_SDK_TYPES_VISIT(Class)                                                                 \
    void visit(Like<Result, Class>& value) override                                                \
    {                                                                                              \
        if constexpr (std::is_base_of_v<std::remove_const_t<Result>, Class>)                       \
            result_ = &value;                                                                      \
    }
    MXF_SDK_TYPES_FOR_EACH_CLASS(MXF_SDK_TYPES_VISIT)
#undef MXF_SDK_TYPES_VISIT

    Result* result_ = nullptr;
};

template <typename Result, typename Value>
Result* getBase(Value& value)
{
    GetBaseVisitor<Result> visitor;
    value.accept(visitor);
    return visitor.result_;
}

} // namespace

const SimpleDataType* asSimpleDataType(const BaseType& value)
{
    return getBase<const SimpleDataType>(value);
}

SimpleDataType* asSimpleDataType(BaseType& value)
{
    return getBase<SimpleDataType>(value);
}

const Collection* asCollection(const BaseType& value)
{
    return getBase<const Collection>(value);
}

Collection* asCollection(BaseType& value)
{
    return getBase<Collection>(value);
}

const UID* asUID(const BaseType& value)
{
    return getBase<const UID>(value);
}

UID* asUID(BaseType& value)
{
    return getBase<UID>(value);
}

const Reference* asReference(const BaseType& value)
{
    return getBase<const Reference>(value);
}

Reference* asReference(BaseType& value)
{
    return getBase<Reference>(value);
}

#define MXF_SDK_TYPES_SERIALIZE(Class)                                                             \
    void SerializationVisitor::visit(const Class& value)                                           \
    {                                                                                              \
        value.serialize(sink_);                                                                    \
    }
MXF_SDK_TYPES_FOR_EACH_CLASS(MXF_SDK_TYPES_SERIALIZE)
#undef MXF_SDK_TYPES_SERIALIZE

} // namespace MXF::SDK::Types::Visitors
