// Engine sessions: the map from an engine session, which Java names by a number, to its runtime
// context. A process without engine sessions never calls this; every lookup then falls back to the
// blessed context. All functions may be called from any thread.
#pragma once

#include <boost/optional.hpp>
#include <boost/shared_ptr.hpp>

#include "base/export.h"
#include "service/context.h"

namespace zvm {

using ZvmID = unsigned long;

// The context that a session runs in. Owned by its session.
struct RuntimeContext {
  zlutil::contextmgr::ZcrID zcrID;
};

// One engine session. Immutable.
class SETTINGS_HOST_API ZVM {
 public:
  // The identifier that no session has; it stands for the blessed context.
  static constexpr ZvmID UndefinedID = 0;

  ZVM(ZvmID id, const boost::optional<RuntimeContext>& context) : id_(id), context_(context) {}

  ZvmID getID() const { return id_; }

  // Returns the context, borrowed from the session; null while the session runs in none.
  const RuntimeContext* getContext() const { return context_ ? &*context_ : nullptr; }

 private:
  const ZvmID id_;
  const boost::optional<RuntimeContext> context_;
};

// The process's table of engine sessions.
class SETTINGS_HOST_API ProcessSession {
 public:
  static ProcessSession& session();

  // Returns the session of that identifier, shared with the caller; null if there is none.
  boost::shared_ptr<ZVM> findSession(ZvmID id) const;

  // Enters a session, in place of an earlier one of the same identifier. Throws
  // std::invalid_argument for a null session or for the undefined identifier.
  void addSession(const boost::shared_ptr<ZVM>& zvm);

  // Removes a session; does nothing if there is none of that identifier.
  void removeSession(ZvmID id);

  ProcessSession(const ProcessSession&) = delete;
  ProcessSession& operator=(const ProcessSession&) = delete;

 private:
  ProcessSession();
  ~ProcessSession();
};

}  // namespace zvm
