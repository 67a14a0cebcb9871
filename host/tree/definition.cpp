#include "host/tree/definition.h"

namespace zlutil::settings::host {

DefinitionPtr completed(const DefinitionPtr& first, const Definition& second) {
  const boost::intrusive_ptr<Definition> result(new Definition(second));
  if (first && first->validator) result->validator = first->validator;
  if (first && first->lock) result->lock = first->lock;
  return result;
}

}  // namespace zlutil::settings::host
