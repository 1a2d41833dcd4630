# fmt for a static program: Debian has no static library of it, so its headers alone.
find_path(FMT_INCLUDE_DIR fmt/format.h REQUIRED)
if(NOT TARGET fmt::fmt)
  add_library(fmt::fmt INTERFACE IMPORTED)
  set_target_properties(fmt::fmt PROPERTIES INTERFACE_INCLUDE_DIRECTORIES ${FMT_INCLUDE_DIR}
                                            INTERFACE_COMPILE_DEFINITIONS FMT_HEADER_ONLY)
endif()
