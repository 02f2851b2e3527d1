#include "MXF/SDK/Types/BaseType.h"

#include "MXF/SDK/DataIO/DataSource.h"

namespace MXF::SDK::Types
{

void SimpleDataType::serialize(DataIO::DataSink& sink) const
{
    sink.write(data(), size());
}

} // namespace MXF::SDK::Types
