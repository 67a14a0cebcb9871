// Declares the node interface, for headers that only pass entries on.
#pragma once

namespace zlutil {
namespace settings {

class Settings;

}  // namespace settings
}  // namespace zlutil
