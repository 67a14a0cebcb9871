// Typed values through the bridge: every kind, both directions, at the edges.
#include "values/java/java_values.h"

#include <cmath>
#include <cstring>
#include <limits>

#include "tests/support/bridge_test.h"
#include "values/java/class_records.h"

namespace {

using namespace nativesettings;
using namespace zlutil::boostany;
using test::takeException;

template <class Type>
std::vector<Type> edges() {
  using Limits = std::numeric_limits<Type>;
  if constexpr (std::is_same_v<Type, std::string>) {
    return {"",
            "plain",
            "\xC0\x80",
            "\xED\xA0\xBD\xED\xB8\x80",
            "\xED\xA0\x80",
            std::string(1 << 20, 'x')};
  } else if constexpr (std::is_same_v<Type, bool>) {
    return {false, true, false};
  } else if constexpr (std::is_floating_point_v<Type>) {
    return {Type(0),
            Type(-0.0),
            Limits::quiet_NaN(),
            Limits::infinity(),
            -Limits::infinity(),
            Limits::denorm_min(),
            Limits::max(),
            Limits::lowest(),
            Type(0.1)};
  } else {
    return {Limits::min(), Limits::max(), Type(0), Type(1), Type(-1)};
  }
}

// Equal bit for bit, so that NaN equals itself and 0.0 does not equal -0.0.
template <class Type>
bool identical(const Type& a, const Type& b) {
  if constexpr (std::is_floating_point_v<Type>) {
    return std::memcmp(&a, &b, sizeof(Type)) == 0;
  } else {
    return a == b;
  }
}

template <class Element>
bool identical(const std::vector<Element>& a, const std::vector<Element>& b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (!identical(static_cast<Element>(a[i]), static_cast<Element>(b[i]))) return false;
  }
  return true;
}

class Values : public test::BridgeTest {
 protected:
  // To Java and back, through the class of the Java object.
  template <class Type>
  void expectRoundTrip(const Type& value) {
    jobject object = getJavaValueFromKey(env_, boost::any(value));
    ASSERT_NE(object, nullptr);
    const auto back = getValueFromJava(env_, object, env_->GetObjectClass(object));
    ASSERT_TRUE(back);
    ASSERT_EQ(kKindOf<Type>, back->which());
    EXPECT_TRUE(identical(value, boost::get<Type>(*back))) << kindName(kKindOf<Type>);
  }
};

TEST_F(Values, EveryKindComesBackBitForBit) {
  forEachKind([&](auto tag) {
    using Type = typename decltype(tag)::type;
    using Element = ElementOf<Type>;
    const std::vector<Element> all = edges<Element>();
    if constexpr (kIsVector<Type>) {
      expectRoundTrip(Type());
      expectRoundTrip(Type(1, all[0]));
      expectRoundTrip(Type(33, all[1]));
      expectRoundTrip(all);
    } else {
      for (const Element& value : all) expectRoundTrip(static_cast<Type>(value));
    }
  });
}

TEST_F(Values, AHundredThousandElementsComeBackWithoutJniWarnings) {
  std::vector<double> doubles(100000);
  for (std::size_t i = 0; i < doubles.size(); ++i) doubles[i] = 1.0 / static_cast<double>(i + 1);
  expectRoundTrip(doubles);
  expectRoundTrip(std::vector<std::string>(100000, "s"));
}

TEST_F(Values, UnsignedValuesTravelAsTheBitsOfTheirWidth) {
  jobject byte = getJavaValueFromKey(env_, static_cast<unsigned char>(200));
  EXPECT_EQ(className(byte), "com.velonix.util.types.UnsignedByte");
  EXPECT_EQ(show(byte), "200");
  EXPECT_EQ(show(getJavaValueFromKey(env_, std::numeric_limits<unsigned long>::max())),
            "18446744073709551615");
}

TEST_F(Values, EachKindHasItsJavaClass) {
  const char* const expected[] = {"java.lang.String",  "java.lang.Boolean",
                                  "java.lang.Byte",    "com.velonix.util.types.UnsignedByte",
                                  "java.lang.Short",   "com.velonix.util.types.UnsignedShort",
                                  "java.lang.Integer", "com.velonix.util.types.UnsignedInteger",
                                  "java.lang.Long",    "com.velonix.util.types.UnsignedLong",
                                  "java.lang.Float",   "java.lang.Double"};
  forEachKind([&](auto tag) {
    using Type = typename decltype(tag)::type;
    const int kind = kKindOf<Type>;
    const std::string element = expected[(kind - 1) % kElementKinds];
    const std::string name = kIsVector<Type> ? "[L" + element + ";" : element;
    EXPECT_EQ(name, text(call(getJavaClassOfKind(env_, kind), "getName", "()Ljava/lang/String;")));
    EXPECT_EQ(name, className(getJavaValueFromKey(env_, boost::any(Type()))));
  });
  EXPECT_EQ(getJavaClassOfKind(env_, 0), nullptr);
  EXPECT_EQ(getJavaClassOfKind(env_, 25), nullptr);
}

// ValueKinds.java repeats the list of kinds.
TEST_F(Values, JavaHasTheSameKinds) {
  jclass kinds = env_->FindClass("com/velonix/services/settings/ValueKinds");
  jfieldID elements = env_->GetStaticFieldID(kinds, "ELEMENTS", "[Ljava/lang/Class;");
  const auto classes = static_cast<jobjectArray>(env_->GetStaticObjectField(kinds, elements));
  EXPECT_EQ(env_->GetArrayLength(classes), kElementKinds);
  jmethodID kindOf = env_->GetStaticMethodID(kinds, "of", "(Ljava/lang/Class;)I");
  for (int kind = kFirstKind; kind <= kLastKind; ++kind) {
    EXPECT_EQ(kind, env_->CallStaticIntMethod(kinds, kindOf, getJavaClassOfKind(env_, kind)))
        << kindName(kind);
    EXPECT_FALSE(env_->ExceptionCheck());
  }
}

TEST_F(Values, NoValueIsNull) {
  EXPECT_EQ(getJavaValueFromKey(env_, boost::any()), nullptr);
  EXPECT_EQ(getJavaValueFromKey(env_, boost::any('c')), nullptr) << "char is none of the kinds";
}

TEST_F(Values, NullsAreRefusedBeforeJavaIsCalled) {
  jclass integerClass = env_->FindClass("java/lang/Integer");
  EXPECT_THROW(getValueFromJava(env_, nullptr, integerClass), std::invalid_argument);
  for (jobject first : {integer(1), static_cast<jobject>(str("text"))}) {
    jobjectArray holed = env_->NewObjectArray(3, env_->GetObjectClass(first), nullptr);
    env_->SetObjectArrayElement(holed, 0, first);
    try {
      getValueFromJava(env_, holed, env_->GetObjectClass(holed));
      FAIL() << className(first);
    } catch (const std::invalid_argument& e) {
      EXPECT_STREQ("null value", e.what());
    }
  }
}

TEST_F(Values, OtherClassesMatchNoKind) {
  EXPECT_FALSE(getValueFromJava(env_, nullptr, nullptr));
  EXPECT_FALSE(getValueFromJava(env_, str("x"), env_->FindClass("java/lang/Object")));
  jintArray primitives = env_->NewIntArray(2);
  EXPECT_FALSE(getValueFromJava(env_, primitives, env_->GetObjectClass(primitives)));
  jobjectArray nested = env_->NewObjectArray(1, env_->FindClass("[Ljava/lang/Integer;"), nullptr);
  EXPECT_FALSE(getValueFromJava(env_, nested, env_->GetObjectClass(nested)));
}

}  // namespace
