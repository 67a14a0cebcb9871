#include "host/change/commit_comment.h"

#include "host/change/given_text.h"
#include "service/history.h"

namespace zlutil::settings {
namespace {

// The comment of the innermost scope of this thread. A pointer, because a thread may still change
// settings when its objects have been destroyed.
thread_local const std::string* current = nullptr;

}  // namespace

std::string host::commitComment() { return current ? *current : std::string(); }

CommitComment::CommitComment(const std::string& comment)
    : comment_(host::narrowText(comment, "a comment")), outer_(current) {
  current = &comment_;
}

CommitComment::~CommitComment() { current = outer_; }

}  // namespace zlutil::settings
