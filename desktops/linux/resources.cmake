# The drawings of the symbols become resources of rookbay_linux under :/symbols. The ones of the status bar are drawn
# at build time too, so that starting up needs no image library.
file(GLOB symbol_files CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/resources/symbols/*.svg)
qt_add_resources(rookbay_linux symbols PREFIX /symbols BASE ${CMAKE_SOURCE_DIR}/resources/symbols
                 FILES ${symbol_files})

add_executable(rookbay-prerender ${CMAKE_CURRENT_LIST_DIR}/prerender/main.cpp ${CMAKE_CURRENT_LIST_DIR}/SymbolStrokes.cpp)
target_link_libraries(rookbay-prerender PRIVATE Qt6::Gui)
target_include_directories(rookbay-prerender PRIVATE ${CMAKE_SOURCE_DIR})

set(prerendered ${CMAKE_CURRENT_BINARY_DIR}/prerendered)
file(MAKE_DIRECTORY ${prerendered})

# prerender_symbol(NAME STROKES SUFFIX size...) in pixels, for screens of 1 to 2 pixels a point
function(prerender_symbol name strokes suffix)
    set(drawing ${CMAKE_SOURCE_DIR}/resources/symbols/${name}.svg)
    if(NOT EXISTS ${drawing})
        return()
    endif()
    set(pictures ${ARGN})
    list(TRANSFORM pictures PREPEND ${prerendered}/${name}${suffix}-)
    list(TRANSFORM pictures APPEND .alpha)
    add_custom_command(
        OUTPUT ${pictures}
        COMMAND ${CMAKE_COMMAND} -E env QT_QPA_PLATFORM=offscreen XDG_RUNTIME_DIR=${prerendered}
                $<TARGET_FILE:rookbay-prerender> ${drawing} ${strokes} ${prerendered}/${name}${suffix} ${ARGN}
        DEPENDS rookbay-prerender ${drawing}
        COMMENT "Drawing ${name}"
        VERBATIM)
    set(all_pictures ${all_pictures} ${pictures} PARENT_SCOPE)
endfunction()
prerender_symbol(lock.display 1 "" 16 22 24 32 44 48)
prerender_symbol(chevron.left 1.25 -semibold 15 19 23 30)
prerender_symbol(chevron.right 1.25 -semibold 15 19 23 30)
prerender_symbol(circle.fill 1 "" 6 8 9 12)
if(all_pictures)
    qt_add_resources(rookbay_linux symbols_prerendered PREFIX /symbols BASE ${prerendered} FILES ${all_pictures})
endif()

# The sounds, under :/sounds.
file(GLOB sound_files CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/resources/sounds/*.wav ${CMAKE_SOURCE_DIR}/resources/sounds/*.oga)
if(sound_files)
    qt_add_resources(rookbay_linux sounds PREFIX /sounds BASE ${CMAKE_SOURCE_DIR}/resources/sounds FILES ${sound_files})
endif()

# The program's icon, under :/icons.
qt_add_resources(rookbay_linux icons PREFIX /icons BASE ${CMAKE_SOURCE_DIR}/resources/icons
                 FILES ${CMAKE_SOURCE_DIR}/resources/icons/rookbay.svg)
