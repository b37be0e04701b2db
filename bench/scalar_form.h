// The kernels in their scalar form: compiled a second time, in a namespace of their own, for no instruction set beyond
// the compiler's and without vectors made by the compiler itself.
#pragma once

extern "C" const void* ScalarFormOf(const char* kernel);  // a Kernel; null for an unknown name
