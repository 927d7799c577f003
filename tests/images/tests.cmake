# Image file formats. The files the readers are checked against are made at test time
# by ImageMagick (an independent implementation) from plain-text patterns, through a
# fixture that every trImageFormats* test requires; the files the library writes are
# read back by ImageMagick, OpenEXR and libtiff inside those tests.
# Debian names the real program convert-im6.q16; convert itself may be a link or wrapper.
find_program(OSTREL_IMAGEMAGICK_CONVERT NAMES convert-im6.q16 convert)
set(OSTREL_IMAGE_TEST_DATA ${CMAKE_BINARY_DIR}/tests/image-data)

add_test(NAME images.make_test_files
    COMMAND ${CMAKE_COMMAND} -DCONVERT=${OSTREL_IMAGEMAGICK_CONVERT} -DOUT=${OSTREL_IMAGE_TEST_DATA}
        -P ${CMAKE_CURRENT_SOURCE_DIR}/images/make_test_images.cmake)
set_tests_properties(images.make_test_files PROPERTIES FIXTURES_SETUP ostrel_image_files)

if(TARGET ostrel_images_tests)
    target_compile_definitions(ostrel_images_tests PRIVATE
        OSTREL_IMAGE_TEST_DATA="${OSTREL_IMAGE_TEST_DATA}/")
    if(OSTREL_IMAGEMAGICK_CONVERT)
        target_compile_definitions(ostrel_images_tests PRIVATE
            OSTREL_IMAGEMAGICK_CONVERT="${OSTREL_IMAGEMAGICK_CONVERT}")
    endif()
    if(TARGET ostrel_plugin_image_writers)
        target_compile_definitions(ostrel_images_tests PRIVATE
            OSTREL_IMAGE_WRITER_PLUGIN_DIR="${CMAKE_BINARY_DIR}/plugins/")
        add_dependencies(ostrel_images_tests ostrel_plugin_image_writers)
    endif()
    # Written files are checked with the formats' own libraries as well.
    find_package(OpenEXR CONFIG QUIET)
    find_package(TIFF QUIET)
    if(OpenEXR_FOUND)
        target_compile_definitions(ostrel_images_tests PRIVATE OSTREL_HAVE_OPENEXR=1)
        target_link_libraries(ostrel_images_tests PRIVATE OpenEXR::OpenEXR)
    endif()
    if(TIFF_FOUND)
        target_compile_definitions(ostrel_images_tests PRIVATE OSTREL_HAVE_TIFF=1)
        target_link_libraries(ostrel_images_tests PRIVATE TIFF::TIFF)
    endif()

    # The discovered tests exist only when CTest runs, so the fixture is attached from
    # a file that CTest reads after the discovery's own.
    set(fixture_file ${CMAKE_CURRENT_BINARY_DIR}/ostrel_image_files_fixture.cmake)
    file(WRITE ${fixture_file}
        "foreach(t IN LISTS ostrel_images_tests_TESTS)\n"
        "    if(t MATCHES \"^trImageFormats\")\n"
        "        set_tests_properties(\"\${t}\" PROPERTIES FIXTURES_REQUIRED ostrel_image_files)\n"
        "    endif()\n"
        "endforeach()\n")
    set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES ${fixture_file})
endif()
