#include "Framework/Framework.h"

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <string>
#include <sys/random.h>

namespace KEP::Framework::Framework
{

std::uint32_t randomNumber()
{
    std::uint32_t value = 0;
    auto* out = reinterpret_cast<unsigned char*>(&value);
    std::size_t got = 0;
    while (got < sizeof value)
    {
        const ssize_t n = ::getrandom(out + got, sizeof value - got, 0);
        if (n < 0)
        {
            if (errno == EINTR)
                continue;
            throw std::runtime_error(std::string("getrandom failed: ") + std::strerror(errno));
        }
        got += static_cast<std::size_t>(n);
    }
    return value;
}

} // namespace KEP::Framework::Framework
