# qv_settings: what every target of the project is compiled with.
add_library(qv_settings INTERFACE)
target_compile_options(qv_settings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror
  -Wno-sign-conversion             # part of -Wconversion for Clang only
  -Wno-missing-field-initializers  # a record that names some of its fields means zero for the others
  # A fused multiply-add rounds once where two operations round twice: it would change bytes.
  -ffp-contract=off
  -fvisibility=hidden
  # The tracked allocator tells where a block was asked for by paths that begin at the source tree.
  "-ffile-prefix-map=${CMAKE_SOURCE_DIR}/=")

if(QV_SANITIZE)
  target_compile_options(qv_settings INTERFACE -fsanitize=${QV_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(qv_settings INTERFACE -fsanitize=${QV_SANITIZE})
endif()

find_package(Threads REQUIRED)
target_link_libraries(qv_settings INTERFACE Threads::Threads)
