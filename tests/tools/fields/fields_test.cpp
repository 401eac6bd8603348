#include "tools/fields/fields.h"

#include <gtest/gtest.h>

namespace tevra::tools {
namespace {

DescriptorFields descriptor(int tag, const std::string& payload) {
  DescriptorFields fields;
  fields.tag = tag;
  fields.payload = payload;
  return fields;
}

/** In their order, no two of them equal. */
std::vector<Field> ascending() {
  return {
      {"a", Number{1, "1", {}}},
      {"a", Number{2, "2", {}}},
      {"a", Flag{false, "no"}},
      {"a", Flag{true, "yes"}},
      {"a", Text{"a"}},
      {"a", Text{"b"}},
      {"a", Time{"2024-05-17", 0}},
      {"a", Time{"2024-05-18", 1}},
      {"a", Bytes{"a"}},
      {"a", Bytes{"b"}},
      {"a", List{}},
      {"a", List{{{decimalField("b", 1)}}}},
      {"a", List{{{decimalField("b", 2)}}}},
      {"a", DescriptorLoop{{descriptor(1, "b")}}},
      {"a", DescriptorLoop{{descriptor(2, "a")}}},
      {"a", DescriptorLoop{{descriptor(2, "b")}}},
      {"b", Number{1, "1", {}}},
  };
}

TEST(Fields, AreOrderedByNameTypeAndValue) {
  const std::vector<Field> fields = ascending();
  for (size_t i = 0; i < fields.size(); ++i) {
    for (size_t k = 0; k < fields.size(); ++k) {
      EXPECT_EQ(i < k, fields[i] < fields[k]) << i << " and " << k;
      EXPECT_EQ(i == k, fields[i] == fields[k]) << i << " and " << k;
    }
  }
}

TEST(Fields, AreEqualHoweverTheyAreShown) {
  const Field number = {"a", Number{1, "0x01", "one"}, /*isLabelled=*/false};
  EXPECT_EQ(ascending()[0], number);
  DescriptorFields decoded = descriptor(2, "b");
  decoded.fields = {number};
  EXPECT_EQ(descriptor(2, "b"), decoded);
}

}  // namespace
}  // namespace tevra::tools
