# zel_add_plugin(<format> SOURCES <file>... [LIBRARIES <target>...])
#
# Builds the shared object zel_<format>_d.so as the target zel_plugin_<format>. A database entry
# names it as zel_<format>.so: the library puts "_d" between the base name and the extension of the
# name in the database.
#
# In plugins/ of this tree the entry is <format>.zel beside the caller's CMakeLists.txt, and goes into the
# default database. Elsewhere, after find_package(zel), the caller says where the object and its
# database go; the folder where the library looks for bare names is ${zel_PLUGIN_DIR}.

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
    if(ZEL_IN_OWN_PLUGINS)
        zel_own_plugin(${format} ${target})
    endif()
endfunction()
