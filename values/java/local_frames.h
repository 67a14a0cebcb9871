// Local references in a long loop: a frame that is replaced every kChunk steps, so that a loop over
// an array of any length holds a bounded number of references.
#pragma once

#include <jni.h>

#include <boost/optional.hpp>

#include "bridge/java_layer.h"

namespace nativesettings {

class LocalFrames {
 public:
  explicit LocalFrames(JNIEnv* env) : env_(env) {}

  // Call before each step of the loop; a step makes at most two references.
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
