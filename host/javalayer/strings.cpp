// Converts Java strings to narrow and 16-bit text; and the local-reference frame.
#include <cstring>

#include "bridge/java_layer.h"

void zljGetStdString(std::string& out, JNIEnv* env, jstring text) {
  // The longest text, in characters, that is copied by way of the stack, which saves a JNI call. A
  // character takes at most three bytes, none of which is zero.
  constexpr jsize kOnStack = 80;
  out.clear();
  if (!text) return;
  const jsize length = env->GetStringLength(text);
  if (length <= kOnStack) {
    char buffer[3 * kOnStack + 1];
    env->GetStringUTFRegion(text, 0, length, buffer);
    buffer[3 * kOnStack] = '\0';
    out.assign(buffer, length == 0 ? 0 : std::strlen(buffer));
    return;
  }
  out.resize(env->GetStringUTFLength(text));
  env->GetStringUTFRegion(text, 0, length, out.data());
}

std::string zljGetStdString(JNIEnv* env, jstring text) {
  std::string out;
  zljGetStdString(out, env, text);
  return out;
}

base::ustring zljGetUstring(JNIEnv* env, jstring text) {
  base::ustring out;
  if (!text) return out;
  static_assert(sizeof(jchar) == sizeof(char16_t));
  out.resize(env->GetStringLength(text));
  env->GetStringRegion(text, 0, static_cast<jsize>(out.size()),
                       reinterpret_cast<jchar*>(out.data()));
  return out;
}

zljLocalReferenceFrame::zljLocalReferenceFrame(JNIEnv* env, jint capacity)
    : env_(env), pushed_(env->PushLocalFrame(capacity) == JNI_OK) {
  if (!pushed_) env_->ExceptionClear();
}

zljLocalReferenceFrame::~zljLocalReferenceFrame() {
  if (pushed_) env_->PopLocalFrame(nullptr);
}
