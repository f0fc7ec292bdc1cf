#include <gtest/gtest.h>

#include <map>
#include <random>

#include "platform/kiln/Collection.h"

namespace CollectionTest {

template <class Map>
std::map<std::uint32_t, int> contentsOf(Map& map) {
  std::map<std::uint32_t, int> contents;
  for (auto const& [key, value] : map) EXPECT_TRUE(contents.emplace(key, value).second) << key << " is visited twice";
  EXPECT_EQ(contents.size(), map.size());
  return contents;
}

template <class Map>
class Collections : public testing::Test {};
using Maps = testing::Types<Kiln::HashMap<std::uint32_t, int>, Kiln::IdMap<std::uint32_t, int>,
                            Kiln::SmallMap<std::uint32_t, int>>;
TYPED_TEST_SUITE(Collections, Maps);

TYPED_TEST(Collections, HoldWhatAModelHolds) {
  std::mt19937 random(1);
  TypeParam map;
  std::map<std::uint32_t, int> model;
  for (int step = 0; step < 20'000; ++step) {
    // Numbers that follow each other, some that are far away, and the largest.
    auto const number = static_cast<std::uint32_t>(random() % 150);
    auto const key = number < 140 ? number : number < 149 ? number << 20 : ~std::uint32_t{0};
    auto const found = map.find(key);
    ASSERT_EQ(found != map.end(), model.contains(key)) << "key " << key << " in step " << step;
    if (random() % 2) {
      ASSERT_EQ(map.try_emplace(key, step).second, model.try_emplace(key, step).second);
      ASSERT_EQ(map.find(key)->second, model[key]);
    } else if (found != map.end()) {
      map.erase(found);
      model.erase(key);
    }
    if (step % 500 == 0) {
      ASSERT_EQ(contentsOf(map), model) << "in step " << step;
    }
  }
  for (auto at = map.begin(); at != map.end(); ++at) map.erase(at);
  EXPECT_TRUE(map.empty() && map.begin() == map.end());
}

}  // namespace CollectionTest
