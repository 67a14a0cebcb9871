// Which library of the process an address belongs to. Several bridges may call the one host of a
// process, each from a library of its own, and what the host keeps for one of them it finds by
// this. Any thread; takes no lock, so that it may be asked while libraries are loaded and unloaded.
#pragma once

namespace base {

// Where the library, or program, with that code or static object begins: the same for all its
// addresses, and no other's as long as it is mapped. Null for an address in none (stack, heap).
const void* libraryOf(const void* address) noexcept;

}  // namespace base
