// Reading what Java hands over in the calling thread's exchange buffer (Exchange.java says how it
// is laid out). What was written stays there until the next call of Java on the thread, so it is
// read at once.
#pragma once

#include <jni.h>

#include <string>
#include <vector>

namespace nativesettings {

class ExchangeReader {
 public:
  // Takes what a method of Exchange returned: an address, or 0 when Java does not know it yet; then
  // it is noted for the next time. std::runtime_error when Java has left an exception pending.
  ExchangeReader(JNIEnv* env, jlong address);

  // Each reads what comes next.
  jint count();
  jlong bits();
  std::string text();

 private:
  template <class Number>
  Number next();

  const char* at_;
};

// The arguments of a native method that name a place, with one call of Java. What is null in Java
// is empty here.
class GivenArguments {
 public:
  GivenArguments(JNIEnv* env, jobjectArray path, jstring key, jstring level);
  // The value of the SettingInfo comes with them: it is what is left to read.
  GivenArguments(JNIEnv* env, jobjectArray path, jstring key, jstring level, jobject settingInfo);

  std::vector<std::string> path;
  std::string key;
  std::string level;
  ExchangeReader rest;

 private:
  GivenArguments(JNIEnv* env, jlong address);
};

}  // namespace nativesettings
