// libFuzzer target for Big5ToGbA and GbToBig5A with random source lengths
// and destination capacities: nothing may be read or written outside the
// buffers, and the output copies every byte that is not a converted pair.

#include <palvet/charset/charset_convert.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size)
{
    if (size < 3)
        return 0;
    bool big5 = data[0] & 1;
    int capacity = (data[1] << 8 | data[2]) % 4097;
    data += 3;
    size -= 3;

    std::vector<char> in(data, data + size);
    std::vector<char> out(static_cast<size_t>(capacity));
    auto fn = big5 ? Big5ToGbA : GbToBig5A;
    fn(in.empty() ? nullptr : in.data(), static_cast<int>(in.size()), out.empty() ? nullptr : out.data(), capacity);

    // A byte below 0x40 is neither lead nor trail of any pair, so it is
    // copied wherever the output reaches.
    size_t n = in.size() < out.size() ? in.size() : out.size();
    for (size_t i = 0; i < n; ++i) {
        if (static_cast<unsigned char>(in[i]) < 0x40 && out[i] != in[i])
            abort();
    }
    return 0;
}
