# What a program for Windows holds beside its code.

# Libraries of the compiler, which come last, are linked in as well.
set(CMAKE_LINK_SEARCH_START_STATIC ON)
set(CMAKE_LINK_SEARCH_END_STATIC ON)

# vantrel_windows_plugins(TARGET): the parts of Qt that a static build has to name. The platform
# without a display serves the tests.
function(vantrel_windows_plugins target)
    if(NOT TARGET Qt6::Gui)
        return()
    endif()
    set(plugins Qt6::QWindowsIntegrationPlugin Qt6::QOffscreenIntegrationPlugin)
    if(TARGET Qt6::Widgets)
        list(APPEND plugins Qt6::QWindowsVistaStylePlugin)
    endif()
    qt_import_plugins(${target} INCLUDE ${plugins})
endfunction()

# vantrel_windows_resources(TARGET): icon, manifest, version and the texts of the event log.
function(vantrel_windows_resources target)
    set(sources "${CMAKE_CURRENT_FUNCTION_LIST_DIR}/../packaging")
    set(folder "${CMAKE_CURRENT_BINARY_DIR}")
    find_program(WINDMC x86_64-w64-mingw32-windmc REQUIRED)
    find_program(RSVG_CONVERT rsvg-convert REQUIRED)
    find_program(ICOTOOL icotool REQUIRED)

    set(images)
    foreach(size 16 20 24 32 40 48 64 256)
        set(image "${folder}/icon-${size}.png")
        add_custom_command(
            OUTPUT "${image}"
            COMMAND "${RSVG_CONVERT}" -w ${size} -h ${size} -o "${image}"
                "${sources}/vantrel-grapher.svg"
            DEPENDS "${sources}/vantrel-grapher.svg"
            VERBATIM)
        list(APPEND images "${image}")
    endforeach()
    add_custom_command(
        OUTPUT "${folder}/VantrelGrapher.ico"
        COMMAND "${ICOTOOL}" --create --output "${folder}/VantrelGrapher.ico" ${images}
        DEPENDS ${images}
        VERBATIM)
    add_custom_command(
        OUTPUT "${folder}/events.rc"
        COMMAND "${WINDMC}" -h "${folder}" -r "${folder}" "${sources}/windows/events.mc"
        DEPENDS "${sources}/windows/events.mc"
        VERBATIM)
    configure_file("${sources}/windows/VantrelGrapher.rc.in" "${folder}/VantrelGrapher.rc" @ONLY)
    set_source_files_properties("${folder}/VantrelGrapher.rc" PROPERTIES OBJECT_DEPENDS
        "${folder}/VantrelGrapher.ico;${folder}/events.rc;${sources}/windows/VantrelGrapher.manifest")
    target_sources(${target} PRIVATE "${folder}/VantrelGrapher.rc")
endfunction()
