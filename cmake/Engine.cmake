# The database engine: SQLite with page encryption (SQLite3 Multiple Ciphers), built here from its
# amalgamation with our own flags. The amalgamation is taken from an npm package, pinned by version
# and hash, and kept in a cache that all presets share; TARNWICK_ENGINE_CACHE (a cache variable or
# an environment variable) names another folder for it, where a build without a network finds the
# package laid down beforehand.

set(TARNWICK_ENGINE_PACKAGE better-sqlite3-multiple-ciphers)
set(TARNWICK_ENGINE_VERSION 13.0.3)  # SQLite 3.53.4, SQLite3 Multiple Ciphers 2.4.0
set(TARNWICK_ENGINE_SHA512
    "51869b33cdabd49f384cb59cfd2b33a07b3a5e8a56a65ff61c283736e8b52546855e0fd52ecc3390fa306224612bfe027ed23c760b62930c9941e70c95dac6c5")

if(DEFINED ENV{TARNWICK_ENGINE_CACHE})
  set(engine_cache_default $ENV{TARNWICK_ENGINE_CACHE})
else()
  set(engine_cache_default ${CMAKE_SOURCE_DIR}/build/engine-cache)
endif()
set(TARNWICK_ENGINE_CACHE ${engine_cache_default} CACHE PATH "Where the engine's package is kept")

set(engine_archive
    ${TARNWICK_ENGINE_CACHE}/${TARNWICK_ENGINE_PACKAGE}-${TARNWICK_ENGINE_VERSION}.tgz)
set(engine_source ${TARNWICK_ENGINE_CACHE}/${TARNWICK_ENGINE_VERSION})

function(tarnwick_fetch_engine)
  file(MAKE_DIRECTORY ${TARNWICK_ENGINE_CACHE})
  # Two configurations may run at once; the second waits and finds the work done.
  file(LOCK ${TARNWICK_ENGINE_CACHE}/lock GUARD FUNCTION TIMEOUT 600)
  if(EXISTS ${engine_source}/complete)
    return()
  endif()
  if(NOT EXISTS ${engine_archive})
    find_program(TARNWICK_NPM npm REQUIRED)
    message(STATUS "Fetching ${TARNWICK_ENGINE_PACKAGE} ${TARNWICK_ENGINE_VERSION}")
    execute_process(
      COMMAND ${TARNWICK_NPM} pack --silent ${TARNWICK_ENGINE_PACKAGE}@${TARNWICK_ENGINE_VERSION}
      WORKING_DIRECTORY ${TARNWICK_ENGINE_CACHE}
      RESULT_VARIABLE result OUTPUT_QUIET ERROR_VARIABLE error)
    if(NOT result EQUAL 0)
      message(FATAL_ERROR "The database engine could not be fetched: ${error}")
    endif()
  endif()
  file(SHA512 ${engine_archive} hash)
  if(NOT hash STREQUAL TARNWICK_ENGINE_SHA512)
    file(REMOVE ${engine_archive})
    message(FATAL_ERROR "The database engine's package is not the one that is expected "
                        "(SHA-512 ${hash}); it has been removed.")
  endif()
  set(unpacked ${TARNWICK_ENGINE_CACHE}/unpacked)
  file(REMOVE_RECURSE ${unpacked} ${engine_source})
  file(ARCHIVE_EXTRACT INPUT ${engine_archive} DESTINATION ${unpacked}
       PATTERNS "package/LICENSE" "package/deps/sqlite3/*")
  file(MAKE_DIRECTORY ${engine_source})
  foreach(file deps/sqlite3/sqlite3.c deps/sqlite3/sqlite3.h LICENSE)
    file(COPY ${unpacked}/package/${file} DESTINATION ${engine_source})
  endforeach()
  file(REMOVE_RECURSE ${unpacked})
  file(TOUCH ${engine_source}/complete)
endfunction()
tarnwick_fetch_engine()

# The encryption hands a failed read on only where the file ended, and takes what the buffer happens to
# hold for the file's bytes otherwise: a journal or log that could not be read would look empty, and
# what it holds be given up. Every failed read is handed on.
set(engine_file ${CMAKE_BINARY_DIR}/engine/sqlite3.c)
if(NOT EXISTS ${engine_file} OR ${engine_source}/sqlite3.c IS_NEWER_THAN ${engine_file}
   OR ${CMAKE_CURRENT_LIST_FILE} IS_NEWER_THAN ${engine_file})
  file(READ ${engine_source}/sqlite3.c engine_text)
  set(engine_careless "(rc == SQLITE_IOERR_SHORT_READ)")
  string(REPLACE "${engine_careless}" "(rc != SQLITE_OK)" engine_careful "${engine_text}")
  string(LENGTH "${engine_text}" engine_before)
  string(LENGTH "${engine_careful}" engine_after)
  # Two places, fourteen characters shorter each.
  math(EXPR engine_change "${engine_before} - ${engine_after}")
  if(NOT engine_change EQUAL 28)
    message(FATAL_ERROR "The database engine is not the one whose reading was mended.")
  endif()
  file(WRITE ${engine_file} "${engine_careful}")
  unset(engine_text)
  unset(engine_careful)
endif()

add_library(tarnwick_engine STATIC ${engine_file})
target_include_directories(tarnwick_engine SYSTEM PUBLIC ${engine_source})
target_compile_definitions(tarnwick_engine
  PUBLIC
    SQLITE_ENABLE_COLUMN_METADATA
  PRIVATE
    # One connection belongs to one thread; different threads may have different connections.
    SQLITE_THREADSAFE=2
    SQLITE_DEFAULT_MEMSTATUS=0
    SQLITE_DEFAULT_FILE_PERMISSIONS=0600
    # Nothing plain is spilled to disk: temporary tables and sorters stay in memory.
    SQLITE_TEMP_STORE=3
    SQLITE_TRUSTED_SCHEMA=0
    SQLITE_DQS=0
    SQLITE_USE_URI=0
    SQLITE_LIKE_DOESNT_MATCH_BLOBS
    SQLITE_OMIT_LOAD_EXTENSION
    SQLITE_OMIT_SHARED_CACHE
    SQLITE_OMIT_DEPRECATED
    SQLITE_OMIT_TCL_VARIABLE
    SQLITE_MAX_ATTACHED=2
    SQLITE_MAX_VARIABLE_NUMBER=250000
    SQLITE_MAX_SQL_LENGTH=64000000
    SQLITE_MAX_EXPR_DEPTH=2000
    # Lists of keys that a statement holds are read where they lie.
    SQLITE_ENABLE_CARRAY
    HAVE_USLEEP=1
    $<$<CONFIG:Debug>:SQLITE_ENABLE_API_ARMOR>
    # The one cipher in use; AES instructions are used where the processor has them. (A part of the
    # engine that nothing here uses does not link without chacha20.)
    CODEC_TYPE=CODEC_TYPE_AEGIS
    HAVE_CIPHER_AES_128_CBC=0
    HAVE_CIPHER_AES_256_CBC=0
    HAVE_CIPHER_SQLCIPHER=0
    HAVE_CIPHER_RC4=0
    HAVE_CIPHER_ASCON128=0)
# Always optimised: a debug build of the engine makes every test slow and finds nothing of ours.
if(CMAKE_C_COMPILER_ID MATCHES "GNU|Clang")
  target_compile_options(tarnwick_engine PRIVATE -O2 -w)
endif()
if(UNIX)
  # The times of a file need no flush of their own.
  target_compile_definitions(tarnwick_engine PRIVATE HAVE_FDATASYNC=1)
  find_package(Threads REQUIRED)
  target_link_libraries(tarnwick_engine PUBLIC Threads::Threads m)
endif()
