# Install step: links the component COMPONENT in PREFIX/COMPONENTS_DIR to the system program
# TARGET (relative when TARGET lies under the prefix), where the program looks for its
# components. Expects COMPONENT, COMPONENTS_DIR and TARGET to be set.
set(folder "${CMAKE_INSTALL_PREFIX}/${COMPONENTS_DIR}")
set(link "${TARGET}")
cmake_path(IS_PREFIX CMAKE_INSTALL_PREFIX "${TARGET}" NORMALIZE inside)
if(inside)
  file(RELATIVE_PATH link "${folder}" "${TARGET}")
endif()
file(MAKE_DIRECTORY "$ENV{DESTDIR}${folder}")
message(STATUS "Installing: $ENV{DESTDIR}${folder}/${COMPONENT} -> ${link}")
file(CREATE_LINK "${link}" "$ENV{DESTDIR}${folder}/${COMPONENT}" SYMBOLIC)
