#include "host/change/commit_comment.h"

#include "host/change/given_text.h"
#include "service/history.h"

namespace zlutil::settings {
namespace {

std::string& current() {
  static thread_local std::string comment;
  return comment;
}

}  // namespace

const std::string& host::commitComment() { return current(); }

CommitComment::CommitComment(const std::string& comment) : outer_(current()) {
  current() = host::narrowText(comment, "a comment");
}

CommitComment::~CommitComment() { current().swap(outer_); }

}  // namespace zlutil::settings
