#pragma once

#include <rapidjson/document.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace FuzzTest {

/// A stream of decisions that depends on its seed alone.
class Dice {
 public:
  explicit Dice(std::uint64_t seed) : engine_(seed) {}
  /// A number below `count`. REQUIRES: `count` is not 0.
  std::size_t below(std::size_t count) { return engine_() % count; }
  bool oneIn(std::size_t count) { return below(count) == 0; }
  template <class T>
  T const& pick(std::vector<T> const& list) {
    return list[below(list.size())];
  }

 private:
  std::mt19937_64 engine_;
};

/// Changes JSON texts so that most of them stay close to what real ones are: values, names and elements are replaced,
/// removed, doubled, exchanged and moved; a few texts are broken as text.
class Mutator {
 public:
  explicit Mutator(Dice& dice) : dice_(dice) {}

  /// `text` with a few changes; `other` is another text of which parts may be taken. REQUIRES: both are JSON.
  std::string mutated(std::string const& text, std::string const& other);

 private:
  void change(rapidjson::Document& document, rapidjson::Document const& other);
  void changeObject(rapidjson::Value& object, rapidjson::Document::AllocatorType& allocator);
  void changeArray(rapidjson::Value& array, rapidjson::Document::AllocatorType& allocator);
  rapidjson::Value interesting(rapidjson::Value const& former, rapidjson::Document::AllocatorType& allocator);
  /// A text, most often of the same kind as `former`: an address for an address, a name for a name.
  std::string textLike(std::string const& former);
  std::string brokenText(std::string text);

  Dice& dice_;
};

}  // namespace FuzzTest
