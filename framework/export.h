// Visibility of the package's exported names. Everything else in the module stays hidden.
#pragma once

#define OST_VISIBLE __attribute__((visibility("default")))
/// Marks a handler or the init entry: visible under its plain, undecorated name.
#define OST_EXPORT extern "C" OST_VISIBLE
/// Marks a shared or option helper: visible under its C++ name.
#define OST_EXPORT_CPP OST_VISIBLE
