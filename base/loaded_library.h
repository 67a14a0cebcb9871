// The library of the process that an address belongs to. Several bridges, each a library of its
// own, may call the one host of a process; the host tells them apart by this. Any thread. Takes no
// lock, so it may be called while libraries are loaded and unloaded.
#pragma once

namespace base {

// Returns the start address of the library or program that has that code or static object. It is
// the same for all addresses of a library, and no other library has it while that one is mapped.
// Returns null for an address in none (stack, heap).
const void* libraryOf(const void* address) noexcept;

}  // namespace base
