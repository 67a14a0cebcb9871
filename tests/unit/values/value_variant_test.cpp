#include "values/value_variant.h"

#include <gtest/gtest.h>

namespace {

using namespace zlutil::boostany;

TEST(ValueVariant, AValueOfEveryKindComesBackFromItsAlternative) {
  forEachKind([](auto tag) {
    using Type = typename decltype(tag)::type;
    Type value{};
    if constexpr (kIsVector<Type>) value.resize(3);
    const SettingValueVariant variant = convertAnyToVariant(boost::any(value));
    EXPECT_EQ(kKindOf<Type>, variant.which());
    const boost::any back = convertVariantToAny(variant);
    ASSERT_EQ(kKindOf<Type>, kindOfType(back.type()));
    EXPECT_EQ(value, boost::any_cast<Type>(back));
  });
}

TEST(ValueVariant, AValueOutsideTheKindsIsEmpty) {
  EXPECT_EQ(convertAnyToVariant(boost::any()).which(), kNoValue);
  EXPECT_EQ(convertAnyToVariant(boost::any('c')).which(), kNoValue);
  EXPECT_TRUE(convertVariantToAny(SettingValueVariant()).empty());
}

}  // namespace
