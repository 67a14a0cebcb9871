#include "nativesettings/zvm_context.h"

#include <boost/numeric/conversion/cast.hpp>

#include "service/engine_session.h"

zlutil::contextmgr::ZcrID nativezvm::getZcrForHandle(long zvmHandle) {
  const auto id = boost::numeric_cast<zvm::ZvmID>(zvmHandle);
  if (id == zvm::ZVM::UndefinedID) return zlutil::contextmgr::BlessedZcrID;
  const boost::shared_ptr<zvm::ZVM> session = zvm::ProcessSession::session().findSession(id);
  const zvm::RuntimeContext* context = session ? session->getContext() : nullptr;
  return context ? context->zcrID : zlutil::contextmgr::BlessedZcrID;
}
