# Third-party libraries. The system's packages are used where they provide what we need;
# otherwise the prefix filled by scripts/bootstrap-deps.sh (default /opt/tandem-deps).
set(TANDEM_DEPS_PREFIX "/opt/tandem-deps" CACHE PATH "Prefix of the bootstrapped third-party libraries")
list(APPEND CMAKE_PREFIX_PATH ${TANDEM_DEPS_PREFIX})

find_package(Threads REQUIRED)
find_package(PkgConfig REQUIRED)
find_package(SDL3 3.2 REQUIRED CONFIG COMPONENTS SDL3-shared)
find_package(SDL3_image 3.2 REQUIRED CONFIG)
find_package(SDL3_ttf 3.2 REQUIRED CONFIG)
find_package(argparse 3 REQUIRED CONFIG)
find_package(fmt 9 REQUIRED CONFIG)
pkg_check_modules(XXHASH REQUIRED IMPORTED_TARGET libxxhash)
pkg_check_modules(PNG REQUIRED IMPORTED_TARGET libpng)

# Dear ImGui with its SDL3 and SDL_Renderer back ends, compiled once into a static library.
set(IMGUI_SOURCE_DIR "${TANDEM_DEPS_PREFIX}/src/imgui" CACHE PATH "Dear ImGui sources (with backends/)")
if(NOT EXISTS ${IMGUI_SOURCE_DIR}/imgui.cpp OR NOT EXISTS ${IMGUI_SOURCE_DIR}/backends/imgui_impl_sdl3.cpp)
  message(FATAL_ERROR "Dear ImGui sources with SDL3 back ends not found in ${IMGUI_SOURCE_DIR}; run scripts/bootstrap-deps.sh")
endif()
add_library(tandem_imgui STATIC
  ${IMGUI_SOURCE_DIR}/imgui.cpp ${IMGUI_SOURCE_DIR}/imgui_draw.cpp
  ${IMGUI_SOURCE_DIR}/imgui_tables.cpp ${IMGUI_SOURCE_DIR}/imgui_widgets.cpp
  ${IMGUI_SOURCE_DIR}/misc/cpp/imgui_stdlib.cpp
  ${IMGUI_SOURCE_DIR}/backends/imgui_impl_sdl3.cpp ${IMGUI_SOURCE_DIR}/backends/imgui_impl_sdlrenderer3.cpp)
target_include_directories(tandem_imgui SYSTEM PUBLIC
  ${IMGUI_SOURCE_DIR} ${IMGUI_SOURCE_DIR}/backends ${IMGUI_SOURCE_DIR}/misc/cpp)
target_link_libraries(tandem_imgui PUBLIC SDL3::SDL3)

# miniaudio: the header comes from the prefix; its implementation is compiled once here.
find_path(MINIAUDIO_INCLUDE_DIR miniaudio.h PATHS ${TANDEM_DEPS_PREFIX}/include PATH_SUFFIXES miniaudio REQUIRED)
add_library(tandem_miniaudio STATIC ${CMAKE_SOURCE_DIR}/cmake/miniaudio_impl.c)
target_include_directories(tandem_miniaudio SYSTEM PUBLIC ${MINIAUDIO_INCLUDE_DIR})
target_compile_options(tandem_miniaudio PRIVATE -w)
target_link_libraries(tandem_miniaudio PUBLIC Threads::Threads m ${CMAKE_DL_LIBS})
