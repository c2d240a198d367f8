#ifndef PALVET_IMAGING_GEOMETRY_H
#define PALVET_IMAGING_GEOMETRY_H

// Integer rectangles and points, and the placement helpers the drawing
// functions build on. All functions are stateless and re-entrant.
//
// Coordinates are 32-bit ints. Sums and differences that leave the int range
// (a far edge from x + w near INT_MAX, say, which text from a configuration
// file can ask for) wrap as 32-bit two's complement, as the target's
// hardware does; they are never undefined.

#include <palvet/core/export.h>

// Width is right - left, height is bottom - top; empty when left >= right
// or top >= bottom.
struct tagRECT {
    int left;    // first column inside
    int top;     // first row inside
    int right;   // first column past the right edge
    int bottom;  // first row past the bottom edge
};

// A point in pixels.
struct tagPOINT {
    int x;  // column
    int y;  // row
};

// Sets rc to (x, y, x + w, y + h), sums wrapping, and returns rc.
PALVET_API tagRECT* SetRectXY(tagRECT* rc, int x, int y, int w, int h);
// out = (0, 0, width of rc, height of rc).
PALVET_API void GetRelativeRect(tagRECT* out, tagRECT const* rc);
// Multiplies left/right by sx and top/bottom by sy in float, truncating back
// to int; in place, returns rc.
PALVET_API tagRECT* ScaleRect(tagRECT* rc, float sx, float sy);
// Moves rc by (dx, dy); the size does not change.
PALVET_API void InflatRect(tagRECT* rc, int dx, int dy);
// Bounding box of a and b; an empty a gives b as it is, an empty b gives a.
PALVET_API void UnionRect(tagRECT* out, tagRECT const* a, tagRECT const* b);
// Intersection of a and b (out may be a or b). A disjoint pair gives a zero
// width or height at the smaller far edge, never a negative size.
PALVET_API void BoundRect(tagRECT* out, tagRECT const* a, tagRECT const* b);

// 1 when rc is empty (left >= right or top >= bottom), else 0.
PALVET_API int IsRectEmpty(tagRECT const* rc);
// 1 when all four fields are equal, else 0.
PALVET_API int IsRectEqual(tagRECT const* a, tagRECT const* b);
// 1 when pt lies in rc with all four edges inclusive; 0 for an empty rc.
PALVET_API int PtInRect(tagRECT const* rc, tagPOINT pt);

// 1 inside the polygon of n vertices, 0 on its boundary, -1 outside (and for
// fewer than three vertices).
PALVET_API int IsPointInPolySides(int x, int y, tagPOINT* pts, int n);
// Parses "x,y,width,height" (first 31 characters only); each number saturates
// at the int range and the far edges wrap as in SetRectXY. Returns 1 on
// success; with fewer than four fields sets rc to zeros and returns 0.
PALVET_API int ParserRectFromString(char const* text, tagRECT* rc);
// Adjusts the destination and source areas of a copy by the alignment mode
// (1 centre horizontally, 4 right, 16 centre vertically, 64 bottom); with
// scale set and different sizes, fits the source inside the destination.
PALVET_API void GetRectByMode(tagRECT& dst, tagRECT& src, int scale, int mode);
// Places a w by h box inside area (1 centre horizontally, 2 left, 4 right,
// 8 centre vertically, 16 top, 32 bottom), clipped to area.
PALVET_API void GetTextRectByDirect(tagRECT area, int w, int h, int align, tagRECT* out);

// Smallest power of base that is at least n.
PALVET_API int IncreaseToPowerOf(int n, int base);
// Largest power of base strictly below n.
PALVET_API int DecreaseToPowerOf(int n, int base);
// Nearer of the two powers of base around n; a tie gives the lower.
PALVET_API int GetNearestPowerOf(int n, int base);
PALVET_API double Distance(double x1, double y1, double x2, double y2);

#endif
