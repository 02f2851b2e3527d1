#pragma once

#include <string>

namespace KEP::Halvorn
{

// A copy of the dictionary file name that KEPModule holds, safe while the host changes it.
std::wstring currentDictionaryFile();

} // namespace KEP::Halvorn
