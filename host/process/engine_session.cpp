#include "service/engine_session.h"

#include <map>
#include <stdexcept>

#include "base/mutex.h"
#include "base/never_destroyed.h"

namespace zvm {
namespace {

struct SessionTable {
  base::Mutex mutex;
  std::map<ZvmID, boost::shared_ptr<ZVM>> sessions GUARDED_BY(mutex);
};

SessionTable& table() {
  static base::NeverDestroyed<SessionTable> instance;
  return instance.get();
}

}  // namespace

ProcessSession::ProcessSession() = default;
ProcessSession::~ProcessSession() = default;

ProcessSession& ProcessSession::session() {
  static ProcessSession& instance = *new ProcessSession;
  return instance;
}

boost::shared_ptr<ZVM> ProcessSession::findSession(ZvmID id) const {
  SessionTable& all = table();
  base::MutexLock lock(all.mutex);
  const auto found = all.sessions.find(id);
  return found == all.sessions.end() ? boost::shared_ptr<ZVM>() : found->second;
}

void ProcessSession::addSession(const boost::shared_ptr<ZVM>& zvm) {
  if (!zvm) throw std::invalid_argument("a session is needed");
  if (zvm->getID() == ZVM::UndefinedID) {
    throw std::invalid_argument("a session needs an identifier other than " +
                                std::to_string(ZVM::UndefinedID));
  }
  boost::shared_ptr<ZVM> previous = zvm;  // released after the lock
  SessionTable& all = table();
  base::MutexLock lock(all.mutex);
  all.sessions[zvm->getID()].swap(previous);
}

void ProcessSession::removeSession(ZvmID id) {
  boost::shared_ptr<ZVM> removed;  // released after the lock
  SessionTable& all = table();
  base::MutexLock lock(all.mutex);
  const auto found = all.sessions.find(id);
  if (found == all.sessions.end()) return;
  removed.swap(found->second);
  all.sessions.erase(found);
}

}  // namespace zvm
