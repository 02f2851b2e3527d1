// Prints a UUID, a UMID32 and a UUID, one a line: run with deterministic_uids=true, two runs must
// print the same.
#include "MXF/SDK/Types/Factories/UIDFactory.h"

#include <iostream>

int main()
{
    using namespace MXF::SDK::Types::Factories;
    std::wcout << newUUID().toString() << L'\n'
               << newUMID32(0x01, MNMI_SMPTE, INMI_24BIT_PRN).toString() << L'\n'
               << newUUID().toString() << L'\n';
    return 0;
}
