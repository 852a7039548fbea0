# zel_add_plugin(<format> SOURCES <file>... [LIBRARIES <target>...])
#
# Builds the shared object zel_<format>_d.so, which a database entry names as zel_<format>.so: the
# library puts "_d" between the base name and the extension of the name in the database. The entry
# itself is <format>.zel beside the caller's CMakeLists.txt.

function(zel_add_plugin format)
    cmake_parse_arguments(arg "" "" "SOURCES;LIBRARIES" ${ARGN})
    set(target zel_plugin_${format})
    add_library(${target} MODULE ${arg_SOURCES})
    target_link_libraries(${target} PRIVATE zel::zel ${arg_LIBRARIES})
    set_target_properties(${target} PROPERTIES
        PREFIX ""
        OUTPUT_NAME zel_${format}_d
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON)
    if(PROJECT_NAME STREQUAL "zel")
        zel_compile_options(${target})
        set_target_properties(${target} PROPERTIES
            LIBRARY_OUTPUT_DIRECTORY ${ZEL_PLUGIN_OUTPUT_DIRECTORY}
            BUILD_RPATH_USE_ORIGIN ON
            INSTALL_RPATH "$ORIGIN/..")
        install(TARGETS ${target} LIBRARY DESTINATION ${ZEL_PLUGIN_INSTALL_DIR})
        set_property(GLOBAL APPEND PROPERTY ZEL_DATABASE_ENTRIES
            ${CMAKE_CURRENT_SOURCE_DIR}/${format}.zel)
    endif()
endfunction()
