// Java objects to native values.
#include <cstring>
#include <stdexcept>

#include "values/exchange.h"
#include "values/java_helpers.h"
#include "values/java_values.h"

namespace nativesettings {
namespace {

using namespace zlutil::boostany;

// In place of a kind, and in place of an address (Exchange.java).
constexpr jint kNullValue = -1;
constexpr jint kAskForIt = -2;
constexpr jlong kFailed = -1;

// One element out of what Java wrote.
template <class Element>
Element readElement(ExchangeReader& from) {
  if constexpr (std::is_same_v<Element, std::string>) {
    return from.text();
  } else {
    const jlong bits = from.bits();
    if constexpr (std::is_floating_point_v<Element>) {
      Element value;
      std::memcpy(&value, &bits, sizeof(value));  // the low bytes come first
      return value;
    } else {
      // Truncated without a check: the kind was chosen by the object's own class.
      return static_cast<Element>(bits);
    }
  }
}
static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__);

template <class Type>
Type readValue(ExchangeReader& from, jint count) {
  if constexpr (kIsVector<Type>) {
    Type elements;
    elements.reserve(count);
    for (jint i = 0; i < count; ++i) elements.push_back(readElement<ElementOf<Type>>(from));
    return elements;
  } else {
    return readElement<Type>(from);
  }
}

boost::optional<SettingValueVariant> readAny(ExchangeReader from) {
  const jint kind = from.count();
  const jint count = from.count();
  if (kind == kNullValue) throw std::invalid_argument("null value");
  boost::optional<SettingValueVariant> result;
  withTypeOfKind(kind, [&](auto tag) {
    result.emplace(readValue<typename decltype(tag)::type>(from, count));
  });
  return result;
}

}  // namespace

boost::optional<SettingValueVariant> getValueFromJava(JNIEnv* env, jobject value, jclass cls) {
  return readAny(ExchangeReader(env, exchange::write.number(env, value, cls)));
}

InfoOutcome getValueFromInfo(JNIEnv* env, jobject settingInfo, const ExchangeReader& given,
                             boost::optional<SettingValueVariant>& value) {
  if (!settingInfo) throw std::invalid_argument("null value");
  if (ExchangeReader(given).count() != kAskForIt) {
    value = readAny(given);
    return InfoOutcome::kRead;
  }
  const jlong address = exchange::value.number(env, settingInfo);
  if (env->ExceptionCheck()) return InfoOutcome::kGetValueThrew;
  if (address == kFailed) return InfoOutcome::kFailed;
  value = readAny(ExchangeReader(env, address));
  return InfoOutcome::kRead;
}

}  // namespace nativesettings
