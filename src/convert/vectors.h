#ifndef ZEL_CONVERT_VECTORS_H
#define ZEL_CONVERT_VECTORS_H

// The widest vectors, in bits, that the engine may choose at run time: 512, 256 or 0 for the
// baseline alone. The build sets it: less than the library has is for tests and benchmarks, to
// reach what the processor at hand would not choose.

#if !defined(__x86_64__)
#undef ZEL_WIDEST_VECTORS
#define ZEL_WIDEST_VECTORS 0
#endif

#endif
