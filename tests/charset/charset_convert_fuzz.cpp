// libFuzzer target for ConvertCharset under ICU: random type pairs (unknown
// values included), capacities and bytes. The engine must stay inside both
// buffers and report a data size within the capacity.

#include <palvet/charset/charset_convert.h>
#include <palvet/text/buffer.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    if (InitSysLibICU() != 1)
        abort();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size)
{
    if (size < 4)
        return 0;
    int from = static_cast<signed char>(data[0]) % 7;  // -6..6: unknown values too
    int to = static_cast<signed char>(data[1]) % 7;
    unsigned capacity = (static_cast<unsigned>(data[2]) << 8 | data[3]) % 8193;
    data += 4;
    size -= 4;

    // Exactly sized heap blocks, so any overrun is seen.
    std::vector<uint8_t> in(data, data + size);
    std::vector<uint8_t> out(capacity);
    CBuffer source, target;
    source.BindBuffer(in.empty() ? nullptr : in.data(), static_cast<unsigned>(in.size()));
    target.BindBuffer(out.empty() ? nullptr : out.data(), capacity);
    int ok = ConvertCharset(static_cast<eCHARSETTYPE>(from), &source, static_cast<eCHARSETTYPE>(to), &target);
    if (target.GetBufSize() != capacity || target.GetAvailSize() > capacity || (ok && capacity == 0))
        abort();
    if (!ok && target.GetAvailSize() != 0 && target.GetAvailSize() != capacity)
        abort();  // a failure either leaves the target alone or empties it
    if (size != 0 && memcmp(in.data(), data, size) != 0)
        abort();  // the source is read only
    return 0;
}
