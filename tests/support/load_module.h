// Loads a library as the hosts do.
#pragma once

namespace qv_test {

void* LoadModule(const char* path);  // null on failure
void UnloadModule(void* module);
void* SystemModule();  // a library of the system, without the toolkit's resources

inline const char* const kSatellite = QV_SATELLITE;  // tests/satellite, built
inline const char* const kLibrary = QV_LIBRARY;      // the library itself

}  // namespace qv_test
