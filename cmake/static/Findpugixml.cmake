# pugixml for a static program: its own target is the shared library.
find_path(PUGIXML_INCLUDE_DIR pugixml.hpp REQUIRED)
find_library(PUGIXML_LIBRARY pugixml REQUIRED)
if(NOT TARGET pugixml::pugixml)
  add_library(pugixml::pugixml STATIC IMPORTED)
  set_target_properties(pugixml::pugixml PROPERTIES INTERFACE_INCLUDE_DIRECTORIES ${PUGIXML_INCLUDE_DIR}
                                                    IMPORTED_LOCATION ${PUGIXML_LIBRARY})
endif()
