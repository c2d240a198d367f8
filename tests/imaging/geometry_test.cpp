#include <palvet/imaging/geometry.h>

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <string>

namespace {

// Compares a rectangle with (l, t, r, b), printing both on failure.
::testing::AssertionResult Is(tagRECT const& got, int l, int t, int r, int b)
{
    tagRECT const want = {l, t, r, b};
    if (IsRectEqual(&got, &want))
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "(" << got.left << "," << got.top << "," << got.right << ","
                                         << got.bottom << ") != (" << l << "," << t << "," << r << "," << b << ")";
}

TEST(Geometry, BuildsMovesAndScalesRectangles)
{
    tagRECT rc, rel;
    EXPECT_EQ(SetRectXY(&rc, 5, -3, 10, 4), &rc);
    EXPECT_TRUE(Is(rc, 5, -3, 15, 1));
    GetRelativeRect(&rel, &rc);
    EXPECT_TRUE(Is(rel, 0, 0, 10, 4));
    rc = {0, 0, 10, 10};
    InflatRect(&rc, 2, 3);  // moves, does not grow
    EXPECT_TRUE(Is(rc, 2, 3, 12, 13));
    rc = {3, 3, 5, 5};
    EXPECT_TRUE(Is(*ScaleRect(&rc, 0.5f, 0.5f), 1, 1, 2, 2));
    rc = {-3, -5, 7, 9};
    EXPECT_TRUE(Is(*ScaleRect(&rc, 0.5f, 1.5f), -1, -7, 3, 13));  // truncation toward zero
    // Products beyond the int range saturate; NaN gives 0.
    rc = {-3, -5, 7, 9};
    EXPECT_TRUE(Is(*ScaleRect(&rc, 1e30f, std::nanf("")), INT_MIN, 0, INT_MAX, 0));
}

TEST(Geometry, EmptinessUnionIntersectionAndContainment)
{
    tagRECT const empty1 = {5, 5, 5, 9}, empty2 = {1, 8, 9, 2}, a = {0, 0, 10, 10}, b = {5, -2, 20, 6};
    EXPECT_EQ(IsRectEmpty(&empty1) + IsRectEmpty(&empty2) * 2 + IsRectEmpty(&a) * 4, 3);
    tagRECT out;
    UnionRect(&out, &empty1, &empty2);
    EXPECT_TRUE(Is(out, 1, 8, 9, 2));
    UnionRect(&out, &a, &empty1);
    EXPECT_TRUE(Is(out, 0, 0, 10, 10));
    UnionRect(&out, &a, &b);
    EXPECT_TRUE(Is(out, 0, -2, 20, 10));
    tagRECT const far = {20, 20, 30, 30};
    BoundRect(&out, &a, &far);
    EXPECT_TRUE(Is(out, 10, 10, 10, 10));
    out = b;
    BoundRect(&out, &out, &a);
    EXPECT_TRUE(Is(out, 5, 0, 10, 6));

    tagRECT const box = {10, 10, 20, 20};
    EXPECT_EQ(PtInRect(&box, {20, 20}), 1);
    EXPECT_EQ(PtInRect(&box, {10, 10}), 1);
    EXPECT_EQ(PtInRect(&box, {21, 20}), 0);
    EXPECT_EQ(PtInRect(&box, {15, 9}), 0);
    EXPECT_EQ(PtInRect(&empty1, {5, 6}), 0);
}

TEST(Geometry, PointInPolygon)
{
    tagPOINT square[] = {{0, 0}, {10, 0}, {10, 10}, {0, 10}};
    int const onSquare[][3] = {{5, 5, 1}, {15, 5, -1}, {10, 5, 0}, {5, 0, 0}, {10, 10, 0}};
    for (auto const& p : onSquare)
        EXPECT_EQ(IsPointInPolySides(p[0], p[1], square, 4), p[2]) << p[0] << "," << p[1];
    EXPECT_EQ(IsPointInPolySides(5, 5, square, 2), -1);
    // A U shape: the notch is outside, the arms inside.
    tagPOINT u[] = {{0, 0}, {30, 0}, {30, 30}, {20, 30}, {20, 10}, {10, 10}, {10, 30}, {0, 30}};
    int const onU[][3] = {{15, 20, -1}, {5, 20, 1}, {25, 25, 1}, {15, 10, 0}};
    for (auto const& p : onU)
        EXPECT_EQ(IsPointInPolySides(p[0], p[1], u, 8), p[2]) << p[0] << "," << p[1];
    tagPOINT tri[] = {{0, 0}, {10, 0}, {0, 10}};
    EXPECT_EQ(IsPointInPolySides(5, 5, tri, 3), 0);  // on the slanted edge
    EXPECT_EQ(IsPointInPolySides(6, 5, tri, 3), -1);
    EXPECT_EQ(IsPointInPolySides(2, 3, tri, 3), 1);
    // Corner-to-corner edges: the crossing product needs all of 64 bits
    // unsigned, so a signed 64-bit product misplaces these points.
    // Corner-to-corner edges, walked both ways: the crossing product needs
    // all 64 bits unsigned, so a signed 64-bit product misplaces points.
    tagPOINT big[2][3] = {{{INT_MIN, INT_MIN}, {INT_MAX, INT_MAX}, {INT_MIN, INT_MAX}},
                          {{INT_MIN, INT_MIN}, {INT_MIN, INT_MAX}, {INT_MAX, INT_MAX}}};
    int const onBig[][3] = {{INT_MAX - 1, INT_MAX - 1, 0}, {INT_MIN + 1, INT_MAX - 1, 1},
                            {INT_MAX, INT_MAX - 1, -1},    {INT_MIN + 1, INT_MIN + 1, 0},
                            {INT_MIN + 1, INT_MIN + 2, 1}, {INT_MIN + 3, INT_MIN + 2, -1},
                            {0, 1, 1},                     {1, 0, -1}};
    for (auto& poly : big)
        for (auto const& p : onBig)
            EXPECT_EQ(IsPointInPolySides(p[0], p[1], poly, 3), p[2]) << p[0] << "," << p[1];
}

TEST(Geometry, ParsesRectangleText)
{
    tagRECT rc = {1, 1, 1, 1};
    EXPECT_EQ(ParserRectFromString("10,20,30,40", &rc), 1);
    EXPECT_TRUE(Is(rc, 10, 20, 40, 60));
    EXPECT_EQ(ParserRectFromString(",,-5,,12px,abc,7,99", &rc), 1);  // empty fields vanish
    EXPECT_TRUE(Is(rc, -5, 12, -5, 19));
    EXPECT_EQ(ParserRectFromString("1,2,3", &rc), 0);
    EXPECT_TRUE(Is(rc, 0, 0, 0, 0));
    // Only the first 31 characters count.
    EXPECT_EQ(ParserRectFromString((std::string(24, '0') + "1,2,3,1234567").c_str(), &rc), 1);
    EXPECT_TRUE(Is(rc, 1, 2, 4, 3));
    EXPECT_EQ(ParserRectFromString((std::string(29, '0') + "1,2,3,4").c_str(), &rc), 0);
    rc = {1, 2, 3, 4};
    EXPECT_EQ(ParserRectFromString(nullptr, &rc), 0);
    EXPECT_TRUE(Is(rc, 1, 2, 3, 4));
    EXPECT_EQ(ParserRectFromString("1,2,3,4", nullptr), 0);
    // Far edges beyond the int range wrap as 32-bit two's complement.
    EXPECT_EQ(ParserRectFromString("2147483647,0,1,1", &rc), 1);
    EXPECT_TRUE(Is(rc, INT_MAX, 0, INT_MIN, 1));
    EXPECT_EQ(ParserRectFromString("-2147483648,-9,-1,99999999999", &rc), 1);
    EXPECT_TRUE(Is(rc, INT_MIN, -9, INT_MAX, INT_MAX - 9));
    EXPECT_EQ(ParserRectFromString("-99999999999,0,-1,0", &rc), 1);  // saturates, then wraps
    EXPECT_TRUE(Is(rc, INT_MIN, 0, INT_MAX, 0));
}

TEST(Geometry, PlacesSourceByMode)
{
    struct Case {
        tagRECT dst, src;
        int scale, mode;
        tagRECT wantDst, wantSrc;
    };
    Case const cases[] = {
        // Fitted inside, relative to the destination's origin.
        {{100, 100, 500, 400}, {0, 0, 800, 400}, 1, 1, {0, 50, 400, 250}, {0, 0, 800, 400}},
        {{10, 10, 110, 60}, {0, 0, 20, 80}, 1, 16 | 4, {44, 0, 56, 50}, {0, 0, 20, 80}},
        // No centring bit: left for stretching.
        {{10, 10, 110, 60}, {0, 0, 20, 80}, 1, 4 | 64, {10, 10, 110, 60}, {0, 0, 20, 80}},
        // Right alignment assigns the gap, bottom alignment adds it.
        {{100, 0, 300, 100}, {0, 0, 50, 30}, 0, 4 | 64, {150, 70, 300, 100}, {0, 0, 50, 30}},
        // Centring wins over the other bit of its axis.
        {{100, 20, 300, 120}, {0, 0, 51, 31}, 0, 1 | 4 | 16, {174, 54, 300, 120}, {0, 0, 51, 31}},
        // A larger source is cropped instead.
        {{5, 5, 25, 15}, {0, 0, 45, 31}, 0, 1 | 64, {5, 5, 25, 15}, {12, 21, 45, 31}},
    };
    for (Case c : cases) {
        GetRectByMode(c.dst, c.src, c.scale, c.mode);
        EXPECT_TRUE(IsRectEqual(&c.dst, &c.wantDst)) << "mode " << c.mode;
        EXPECT_TRUE(IsRectEqual(&c.src, &c.wantSrc)) << "mode " << c.mode;
    }
}

TEST(Geometry, PlacesTextBoxByAlignment)
{
    tagRECT const area = {10, 20, 110, 70};
    tagRECT out;
    GetTextRectByDirect(area, 30, 11, 1 | 8, &out);
    EXPECT_TRUE(Is(out, 45, 39, 75, 50));
    GetTextRectByDirect(area, 30, 11, 4 | 32, &out);
    EXPECT_TRUE(Is(out, 80, 59, 110, 70));
    GetTextRectByDirect(area, 30, 11, 1 | 2 | 8 | 16, &out);  // later flags win
    EXPECT_TRUE(Is(out, 10, 20, 40, 31));
    GetTextRectByDirect(area, 300, 11, 1, &out);  // clipped to the area
    EXPECT_TRUE(Is(out, 10, 20, 110, 70));
    GetTextRectByDirect(area, 30, 11, 1, nullptr);
}

TEST(Geometry, PowersAndDistance)
{
    // {n, base, increase, decrease, nearest}
    int const cases[][5] = {{8, 2, 8, 4, 8},  {9, 2, 16, 8, 8},       {6, 2, 8, 4, 4},     {7, 2, 8, 4, 8},
                            {2, 2, 2, 1, 2},  {10, 3, 27, 9, 9},      {20, 10, 100, 10, 10}, {0, 2, 1, 1, 1},
                            {77, 1, 77, 77, 77}, {0x7FFFFFFF, 2, 0x7FFFFFFF, 0x40000000, 0x7FFFFFFF}};
    for (auto const& c : cases) {
        EXPECT_EQ(IncreaseToPowerOf(c[0], c[1]), c[2]) << c[0] << ", " << c[1];
        EXPECT_EQ(DecreaseToPowerOf(c[0], c[1]), c[3]) << c[0] << ", " << c[1];
        EXPECT_EQ(GetNearestPowerOf(c[0], c[1]), c[4]) << c[0] << ", " << c[1];
    }
    EXPECT_DOUBLE_EQ(Distance(1, 2, 4, 6), 5.0);
}

}  // namespace
