// The parts of an entry's definition that most entries lack. Immutable, shared by the entry and by
// the readers that have found it under the tree's lock().
#pragma once

#include <boost/optional.hpp>
#include <boost/smart_ptr/intrusive_ptr.hpp>
#include <boost/smart_ptr/intrusive_ref_counter.hpp>
#include <memory>
#include <string>

#include "host/tree/validation.h"
#include "service/description.h"

namespace zlutil::settings::host {

// A lock, which a settings file sets: the values of the levels above the file's have no effect on
// the entry and on those below it, and cannot be changed. Narrow texts.
struct Lock {
  std::string reason;  // may be empty
  std::string source;  // the file with line and column
};

// One level's part of the definition.
struct Definition : boost::intrusive_ref_counter<Definition> {
  ValidatorPtr validator;  // may be null
  boost::optional<Lock> lock;
  std::shared_ptr<const SettingDescription> description;  // may be null
};
using DefinitionPtr = boost::intrusive_ptr<const Definition>;

// Returns whether no text is given.
bool isEmpty(const SettingDescription& texts);

// Adds the texts of `further` that `texts` lacks.
void complete(SettingDescription& texts, const SettingDescription& further);

// Returns a definition with nothing but the validator; null for null.
inline DefinitionPtr definitionWith(ValidatorPtr validator) {
  if (!validator) return {};
  const boost::intrusive_ptr<Definition> definition(new Definition);
  definition->validator = std::move(validator);
  return definition;
}

// Returns `first` with the parts of `second` that it lacks. `first` may be null.
DefinitionPtr completed(const DefinitionPtr& first, const Definition& second);

}  // namespace zlutil::settings::host
