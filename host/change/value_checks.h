// What stands between a candidate value and a key before validators and stores are asked. The
// functions read what the tree guards: the caller holds the tree's lock(), or its writer() for
// checkKind alone.
#pragma once

#include "host/tree/node.h"

namespace zlutil::settings::host {

// Throws CantModifyValuesOnReadOnlyLevel when the level's store does.
void checkWritable(const Entry& entry, int level);

// Throws when the value cannot be the key's: DefaultValidationFailedOnVoidType for an empty value,
// ValidationFailure for a type outside the list or another kind than `kind`, the key's (kNoValue
// accepts every kind).
void checkKind(const Key& key, int kind, const boost::any& value);

}  // namespace zlutil::settings::host
