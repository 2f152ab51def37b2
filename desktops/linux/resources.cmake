# The drawings of the symbols become resources of rookbay_linux under :/symbols. The ones of the status bar are drawn
# at build time too, so that starting up needs no image library.
file(GLOB symbol_files CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/resources/symbols/*.svg)
qt_add_resources(rookbay_linux symbols PREFIX /symbols BASE ${CMAKE_SOURCE_DIR}/resources/symbols
                 FILES ${symbol_files})

add_executable(rookbay-prerender ${CMAKE_CURRENT_LIST_DIR}/prerender/main.cpp)
target_link_libraries(rookbay-prerender PRIVATE Qt6::Gui)

set(status_symbols lock.display)
set(status_sizes 16 22 24 32 44 48)
set(prerendered ${CMAKE_CURRENT_BINARY_DIR}/prerendered)
file(MAKE_DIRECTORY ${prerendered})
foreach(symbol ${status_symbols})
    set(drawing ${CMAKE_SOURCE_DIR}/resources/symbols/${symbol}.svg)
    if(NOT EXISTS ${drawing})
        continue()
    endif()
    list(TRANSFORM status_sizes PREPEND ${prerendered}/${symbol}- OUTPUT_VARIABLE pictures)
    list(TRANSFORM pictures APPEND .alpha)
    add_custom_command(
        OUTPUT ${pictures}
        COMMAND ${CMAKE_COMMAND} -E env QT_QPA_PLATFORM=offscreen XDG_RUNTIME_DIR=${prerendered}
                $<TARGET_FILE:rookbay-prerender> ${drawing} ${prerendered}/${symbol} ${status_sizes}
        DEPENDS rookbay-prerender ${drawing}
        COMMENT "Drawing ${symbol}"
        VERBATIM)
    list(APPEND all_pictures ${pictures})
endforeach()
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
