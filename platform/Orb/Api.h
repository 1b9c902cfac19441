// ROTOR_API marks what a shared library of this project exports: everything
// else is built with hidden visibility, so calls inside a library bind
// directly and the dynamic symbol tables hold only the API.
#pragma once

#if defined(__GNUC__) || defined(__clang__)
#define ROTOR_API __attribute__((visibility("default")))
#else
#define ROTOR_API
#endif
