#include <palvet/imaging/geometry.h>

#include <gtest/gtest.h>

#include <string>

namespace {

tagRECT R(int l, int t, int r, int b)
{
    return tagRECT{l, t, r, b};
}

::testing::AssertionResult Same(tagRECT const& got, tagRECT const& want)
{
    if (IsRectEqual(&got, &want))
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "(" << got.left << "," << got.top << "," << got.right << ","
                                         << got.bottom << ") != (" << want.left << "," << want.top << ","
                                         << want.right << "," << want.bottom << ")";
}

TEST(Geometry, BuildsMovesAndScalesRectangles)
{
    tagRECT rc;
    EXPECT_EQ(SetRectXY(&rc, 5, -3, 10, 4), &rc);
    EXPECT_TRUE(Same(rc, R(5, -3, 15, 1)));
    tagRECT rel;
    GetRelativeRect(&rel, &rc);
    EXPECT_TRUE(Same(rel, R(0, 0, 10, 4)));

    rc = R(0, 0, 10, 10);
    InflatRect(&rc, 2, 3);  // moves, does not grow
    EXPECT_TRUE(Same(rc, R(2, 3, 12, 13)));

    rc = R(3, 3, 5, 5);
    EXPECT_EQ(ScaleRect(&rc, 0.5f, 0.5f), &rc);
    EXPECT_TRUE(Same(rc, R(1, 1, 2, 2)));
    rc = R(-3, -5, 7, 9);
    ScaleRect(&rc, 0.5f, 1.5f);
    EXPECT_TRUE(Same(rc, R(-1, -7, 3, 13)));  // truncation toward zero
}

TEST(Geometry, EmptinessUnionIntersectionAndContainment)
{
    tagRECT const empty1 = R(5, 5, 5, 9), empty2 = R(1, 8, 9, 2), a = R(0, 0, 10, 10), b = R(5, -2, 20, 6);
    EXPECT_EQ(IsRectEmpty(&empty1), 1);
    EXPECT_EQ(IsRectEmpty(&empty2), 1);
    EXPECT_EQ(IsRectEmpty(&a), 0);

    tagRECT out;
    UnionRect(&out, &empty1, &empty2);
    EXPECT_TRUE(Same(out, empty2));
    UnionRect(&out, &a, &empty1);
    EXPECT_TRUE(Same(out, a));
    UnionRect(&out, &a, &b);
    EXPECT_TRUE(Same(out, R(0, -2, 20, 10)));

    BoundRect(&out, &a, &b);
    EXPECT_TRUE(Same(out, R(5, 0, 10, 6)));
    tagRECT const far = R(20, 20, 30, 30);
    BoundRect(&out, &a, &far);
    EXPECT_TRUE(Same(out, R(10, 10, 10, 10)));
    tagRECT inPlace = b;
    BoundRect(&inPlace, &inPlace, &a);
    EXPECT_TRUE(Same(inPlace, R(5, 0, 10, 6)));

    tagRECT const box = R(10, 10, 20, 20);
    EXPECT_EQ(PtInRect(&box, tagPOINT{20, 20}), 1);
    EXPECT_EQ(PtInRect(&box, tagPOINT{10, 10}), 1);
    EXPECT_EQ(PtInRect(&box, tagPOINT{21, 20}), 0);
    EXPECT_EQ(PtInRect(&box, tagPOINT{15, 9}), 0);
    EXPECT_EQ(PtInRect(&empty1, tagPOINT{5, 6}), 0);
}

TEST(Geometry, PointInPolygon)
{
    tagPOINT square[] = {{0, 0}, {10, 0}, {10, 10}, {0, 10}};
    EXPECT_EQ(IsPointInPolySides(5, 5, square, 4), 1);
    EXPECT_EQ(IsPointInPolySides(15, 5, square, 4), -1);
    EXPECT_EQ(IsPointInPolySides(10, 5, square, 4), 0);
    EXPECT_EQ(IsPointInPolySides(5, 0, square, 4), 0);
    EXPECT_EQ(IsPointInPolySides(10, 10, square, 4), 0);
    EXPECT_EQ(IsPointInPolySides(5, 5, square, 2), -1);
    // A U shape: the notch is outside, the arms inside.
    tagPOINT u[] = {{0, 0}, {30, 0}, {30, 30}, {20, 30}, {20, 10}, {10, 10}, {10, 30}, {0, 30}};
    EXPECT_EQ(IsPointInPolySides(15, 20, u, 8), -1);
    EXPECT_EQ(IsPointInPolySides(5, 20, u, 8), 1);
    EXPECT_EQ(IsPointInPolySides(25, 25, u, 8), 1);
    EXPECT_EQ(IsPointInPolySides(15, 10, u, 8), 0);
    tagPOINT tri[] = {{0, 0}, {10, 0}, {0, 10}};
    EXPECT_EQ(IsPointInPolySides(5, 5, tri, 3), 0);  // on the slanted edge
    EXPECT_EQ(IsPointInPolySides(6, 5, tri, 3), -1);
    EXPECT_EQ(IsPointInPolySides(2, 3, tri, 3), 1);
}

TEST(Geometry, ParsesRectangleText)
{
    tagRECT rc = R(1, 1, 1, 1);
    EXPECT_EQ(ParserRectFromString("10,20,30,40", &rc), 1);
    EXPECT_TRUE(Same(rc, R(10, 20, 40, 60)));
    EXPECT_EQ(ParserRectFromString(",,-5,,12px,abc,7,99", &rc), 1);  // empty fields vanish
    EXPECT_TRUE(Same(rc, R(-5, 12, -5, 19)));
    EXPECT_EQ(ParserRectFromString("1,2,3", &rc), 0);
    EXPECT_TRUE(Same(rc, R(0, 0, 0, 0)));

    // Only the first 31 characters count: the fourth field is cut to "1".
    std::string const text = std::string(24, '0') + "1,2,3,1234567";
    EXPECT_EQ(ParserRectFromString(text.c_str(), &rc), 1);
    EXPECT_TRUE(Same(rc, R(1, 2, 4, 3)));
    std::string const cut = std::string(29, '0') + "1,2,3,4";
    EXPECT_EQ(ParserRectFromString(cut.c_str(), &rc), 0);

    rc = R(1, 2, 3, 4);
    EXPECT_EQ(ParserRectFromString(nullptr, &rc), 0);
    EXPECT_TRUE(Same(rc, R(1, 2, 3, 4)));
    EXPECT_EQ(ParserRectFromString("1,2,3,4", nullptr), 0);
}

TEST(Geometry, PlacesSourceByMode)
{
    tagRECT dst = R(100, 100, 500, 400), src = R(0, 0, 800, 400);
    GetRectByMode(dst, src, 1, 1);  // fit inside, relative to the origin
    EXPECT_TRUE(Same(dst, R(0, 50, 400, 250)));
    EXPECT_TRUE(Same(src, R(0, 0, 800, 400)));

    dst = R(10, 10, 110, 60);
    src = R(0, 0, 20, 80);
    GetRectByMode(dst, src, 1, 16 | 4);
    EXPECT_TRUE(Same(dst, R(44, 0, 56, 50)));

    dst = R(10, 10, 110, 60);
    GetRectByMode(dst, src, 1, 4 | 64);  // no centring bit: left for stretching
    EXPECT_TRUE(Same(dst, R(10, 10, 110, 60)));

    dst = R(100, 0, 300, 100);
    src = R(0, 0, 50, 30);
    GetRectByMode(dst, src, 0, 4 | 64);  // right is assigned, bottom added
    EXPECT_TRUE(Same(dst, R(150, 70, 300, 100)));
    EXPECT_TRUE(Same(src, R(0, 0, 50, 30)));

    dst = R(100, 20, 300, 120);
    src = R(0, 0, 51, 31);
    GetRectByMode(dst, src, 0, 1 | 4 | 16);  // centring wins over the other bit
    EXPECT_TRUE(Same(dst, R(174, 54, 300, 120)));

    // A larger source is cropped instead.
    dst = R(5, 5, 25, 15);
    src = R(0, 0, 45, 31);
    GetRectByMode(dst, src, 0, 1 | 64);
    EXPECT_TRUE(Same(dst, R(5, 5, 25, 15)));
    EXPECT_TRUE(Same(src, R(12, 21, 45, 31)));
}

TEST(Geometry, PlacesTextBoxByAlignment)
{
    tagRECT const area = R(10, 20, 110, 70);
    tagRECT out;
    GetTextRectByDirect(area, 30, 11, 1 | 8, &out);
    EXPECT_TRUE(Same(out, R(45, 39, 75, 50)));
    GetTextRectByDirect(area, 30, 11, 4 | 32, &out);
    EXPECT_TRUE(Same(out, R(80, 59, 110, 70)));
    GetTextRectByDirect(area, 30, 11, 1 | 2 | 8 | 16, &out);  // later flags win
    EXPECT_TRUE(Same(out, R(10, 20, 40, 31)));
    GetTextRectByDirect(area, 300, 11, 1, &out);  // clipped to the area
    EXPECT_TRUE(Same(out, R(10, 20, 110, 70)));
    GetTextRectByDirect(area, 30, 11, 0, &out);
    EXPECT_TRUE(Same(out, area));
    GetTextRectByDirect(area, 30, 11, 1, nullptr);
}

TEST(Geometry, PowersAndDistance)
{
    EXPECT_EQ(IncreaseToPowerOf(8, 2), 8);
    EXPECT_EQ(IncreaseToPowerOf(9, 2), 16);
    EXPECT_EQ(IncreaseToPowerOf(10, 3), 27);
    EXPECT_EQ(IncreaseToPowerOf(1, 2), 1);
    EXPECT_EQ(DecreaseToPowerOf(9, 2), 8);
    EXPECT_EQ(DecreaseToPowerOf(8, 2), 4);
    EXPECT_EQ(DecreaseToPowerOf(2, 2), 1);
    EXPECT_EQ(DecreaseToPowerOf(-4, 2), 1);
    EXPECT_EQ(GetNearestPowerOf(6, 2), 4);
    EXPECT_EQ(GetNearestPowerOf(7, 2), 8);
    EXPECT_EQ(GetNearestPowerOf(8, 2), 8);
    EXPECT_EQ(GetNearestPowerOf(0, 2), 1);
    EXPECT_EQ(GetNearestPowerOf(20, 10), 10);
    EXPECT_EQ(IncreaseToPowerOf(77, 1), 77);
    EXPECT_EQ(DecreaseToPowerOf(77, 1), 77);
    EXPECT_EQ(GetNearestPowerOf(77, 1), 77);
    EXPECT_EQ(IncreaseToPowerOf(0x7FFFFFFF, 2), 0x7FFFFFFF);  // saturates instead of looping
    EXPECT_DOUBLE_EQ(Distance(1, 2, 4, 6), 5.0);
}

}  // namespace
