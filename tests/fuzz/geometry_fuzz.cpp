// libFuzzer target for rectangle text and the polygon test: any text and any
// coordinates must give a defined result (the sanitizers report overflow).

#include <palvet/imaging/geometry.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size)
{
    if (size > 4096)
        return 0;
    std::string const text(reinterpret_cast<char const*>(data), size);
    tagRECT rc = {1, 2, 3, 4};
    int const ok = ParserRectFromString(text.c_str(), &rc);
    if (ok != 0 && ok != 1)
        abort();
    if (ok == 0 && (rc.left | rc.top | rc.right | rc.bottom) != 0)
        abort();

    // The same bytes as a point and a polygon of up to 64 vertices.
    if (size >= 8 + 3 * sizeof(tagPOINT)) {
        int x, y;
        memcpy(&x, data, 4);
        memcpy(&y, data + 4, 4);
        size_t const n = (size - 8) / sizeof(tagPOINT) > 64 ? 64 : (size - 8) / sizeof(tagPOINT);
        tagPOINT pts[64];
        memcpy(pts, data + 8, n * sizeof(tagPOINT));
        int const where = IsPointInPolySides(x, y, pts, static_cast<int>(n));
        if (where < -1 || where > 1)
            abort();
    }
    return 0;
}
