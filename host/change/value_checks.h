// Checks of a value before validators and stores are asked. The caller holds the tree's lock(); for
// checkKind() its writer() is enough.
#pragma once

#include "host/tree/node.h"

namespace zlutil::settings::host {

// Throws CantModifyValuesOnReadOnlyLevel if the level is read-only, or the entry or a node above it
// is locked.
void checkWritable(const Entry& entry, int level);

// Throws DefaultValidationFailedOnVoidType for an empty value, and ValidationFailure for a value
// whose type is no kind or another one than `kind` (kNoValue accepts every kind).
void checkKind(const Key& key, int kind, const boost::any& value);

}  // namespace zlutil::settings::host
