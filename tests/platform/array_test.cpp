#include "corvane/platform/array.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

using Ints = CArray<int, int>;

Ints Make(std::initializer_list<int> values)
{
    Ints array;
    for (const int value : values) {
        array.Add(value);
    }
    return array;
}

std::vector<int> Elements(const Ints& array)
{
    return {array.GetData(), array.GetData() + array.GetSize()};
}

TEST(Array, GrowsWithZeroesAndShrinks)
{
    Ints array;
    EXPECT_EQ(array.GetUpperBound(), -1);
    EXPECT_EQ(array.Add(5), 0);
    array.SetSize(3, 16);
    array.SetAtGrow(4, 9);
    EXPECT_EQ(Elements(array), (std::vector<int>{5, 0, 0, 0, 9}));
    array.SetSize(1);
    array.SetSize(2);
    EXPECT_EQ(Elements(array), (std::vector<int>{5, 0}));
    array.SetSize(-3);
    EXPECT_TRUE(array.IsEmpty());
}

TEST(Array, RemovesAndInsertsWithinBounds)
{
    const struct {
        int index, count;
        std::vector<int> removed, inserted;
    } cases[] = {
        {0, 1, {2, 3}, {7, 1, 2, 3}},
        {1, 2, {1}, {1, 7, 7, 2, 3}},
        {2, 5, {1, 2}, {1, 2, 7, 7, 7, 7, 7, 3}},
        {3, 1, {1, 2, 3}, {1, 2, 3, 7}},
        {5, 1, {1, 2, 3}, {1, 2, 3, 0, 0, 7}},
        {1, 0, {1, 2, 3}, {1, 2, 3}},
        {1, -1, {1, 2, 3}, {1, 2, 3}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.count << " at " << c.index);
        Ints array = Make({1, 2, 3});
        array.RemoveAt(c.index, c.count);
        EXPECT_EQ(Elements(array), c.removed);
        array = Make({1, 2, 3});
        array.InsertAt(c.index, 7, c.count);
        EXPECT_EQ(Elements(array), c.inserted);
    }
}

TEST(Array, ElementsMayBeHandedToTheirOwnArray)
{
    CArray<std::string> array;
    array.Add("a text too long to be stored in place");
    for (int i = 0; i < 20; ++i) {
        array.Add(array[0]);
        array.InsertAt(0, array[array.GetUpperBound()]);
        array.SetAtGrow(array.GetSize(), array[0]);
    }
    ASSERT_EQ(array.GetCount(), 61);
    for (int i = 0; i < array.GetSize(); ++i) {
        EXPECT_EQ(array.GetAt(i), "a text too long to be stored in place");
    }
}

} // namespace
