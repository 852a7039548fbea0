#ifndef ZEL_EXPORT_H
#define ZEL_EXPORT_H

/// Marks what the library exports. Everything else is compiled with hidden visibility.
#define ZEL_API __attribute__((visibility("default")))

/// Marks a private member of an exported class that is not exported with it.
#define ZEL_LOCAL __attribute__((visibility("hidden")))

#endif
