#ifndef PHOTOLIB_EXPORT_H
#define PHOTOLIB_EXPORT_H

/// Marks the operations that a host may find in the loaded library. Everything
/// else is built hidden, so that the plug-in never clashes with its host's names.
#if defined(__GNUC__)
#define PHOTOLIB_EXPORT __attribute__((visibility("default")))
#else
#define PHOTOLIB_EXPORT
#endif

#endif // PHOTOLIB_EXPORT_H
