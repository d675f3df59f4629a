#pragma once

// How an interface and its ID are declared with both families of compilers: MSVC takes the ID with the
// interface, mingw takes it from a declaration of its own behind it.

#include <windows.h>

#if defined(__CRT_UUID_DECL)
#define QANH_INTERFACE(id) struct
#define QANH_INTERFACE_ID(type, l, w1, w2, b1, b2, b3, b4, b5, b6, b7, b8)                                   \
    __CRT_UUID_DECL(type, l, w1, w2, b1, b2, b3, b4, b5, b6, b7, b8)
#else
#define QANH_INTERFACE(id) struct __declspec(uuid(id)) __declspec(novtable)
#define QANH_INTERFACE_ID(type, l, w1, w2, b1, b2, b3, b4, b5, b6, b7, b8)
#endif
