# zlib's minizip unzip layer, as the target `minizip`: Debian's libminizip on Linux; for the
# Windows build compiled from zlib's own sources (contrib/minizip of Debian's source package
# zlib), which scripts/setup unpacks into ENGINE_MINIZIP_SOURCE.
if(WIN32)
  set(ENGINE_MINIZIP_SOURCE "$ENV{HOME}/.cache/installengine/zlib/contrib/minizip"
      CACHE PATH "contrib/minizip of zlib's sources")
  if(NOT EXISTS "${ENGINE_MINIZIP_SOURCE}/unzip.c")
    message(FATAL_ERROR "minizip's sources are not at ${ENGINE_MINIZIP_SOURCE}: run scripts/setup")
  endif()
  find_package(ZLIB REQUIRED)
  add_library(minizip STATIC ${ENGINE_MINIZIP_SOURCE}/unzip.c ${ENGINE_MINIZIP_SOURCE}/ioapi.c)
  target_include_directories(minizip SYSTEM PUBLIC ${ENGINE_MINIZIP_SOURCE})
  # Archives are read only; encrypted members are refused before minizip would decrypt them.
  target_compile_definitions(minizip PUBLIC NOUNCRYPT)
  # zlib's own code, compiled as it stands.
  target_compile_options(minizip PRIVATE -w)
  target_link_libraries(minizip PUBLIC ZLIB::ZLIB)
else()
  find_package(PkgConfig REQUIRED)
  pkg_check_modules(MINIZIP REQUIRED IMPORTED_TARGET minizip)
  add_library(minizip INTERFACE)
  target_link_libraries(minizip INTERFACE PkgConfig::MINIZIP)
endif()
