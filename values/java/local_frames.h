// Local frames for a long loop: a new frame replaces the last one every kChunk steps, so that a
// loop over an array of any length holds a bounded number of local references.
#pragma once

#include <jni.h>

#include <boost/optional.hpp>

#include "bridge/java_layer.h"

namespace nativesettings {

class LocalFrames {
 public:
  explicit LocalFrames(JNIEnv* env) : env_(env) {}

  // The caller must call this before each step of the loop, which makes at most two references.
  void step() {
    if (steps_++ % kChunk != 0) return;
    frame_ = boost::none;
    frame_.emplace(env_, 2 * kChunk);
  }

 private:
  static constexpr unsigned kChunk = 128;

  JNIEnv* const env_;
  unsigned steps_ = 0;
  boost::optional<zljLocalReferenceFrame> frame_;
};

}  // namespace nativesettings
