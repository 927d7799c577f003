# Project files through the command-line host: the example reads with every link
# resolved and its keys shown, and a file written by ostrel comes back byte for byte.
if(TARGET ostrel_app)
    set(OSTREL_EXAMPLE_PROJECT ${PROJECT_SOURCE_DIR}/examples/valley.svd)
    add_test(NAME app.info_example COMMAND ostrel_app info ${OSTREL_EXAMPLE_PROJECT})
    set_tests_properties(app.info_example PROPERTIES
        PASS_REGULAR_EXPRESSION "input_node = \"/Terrain/Valley floor\"  -> /Terrain/Valley floor.*amplitude = \"120\"  \\(animated\\)  keys tcb: 1=120 50=300\\(0.5,0,-0.25\\) 100=180.*4 nodes")

    # The project's folders go to the path manager on reading and come back on writing.
    add_test(NAME app.info_example_paths COMMAND ostrel_app info ${OSTREL_EXAMPLE_PROJECT})
    set_tests_properties(app.info_example_paths PROPERTIES
        PASS_REGULAR_EXPRESSION "pathManager_path_renderOutput = \"renders/valley/\"")

    add_test(NAME app.resave_example
        COMMAND ostrel_app resave ${OSTREL_EXAMPLE_PROJECT} ${CMAKE_CURRENT_BINARY_DIR}/valley-resaved.svd)
    set_tests_properties(app.resave_example PROPERTIES FIXTURES_SETUP project_resaved)
    add_test(NAME app.resave_example_identical
        COMMAND ${CMAKE_COMMAND} -E compare_files ${OSTREL_EXAMPLE_PROJECT}
                ${CMAKE_CURRENT_BINARY_DIR}/valley-resaved.svd)
    set_tests_properties(app.resave_example_identical PROPERTIES FIXTURES_REQUIRED project_resaved)

    # A missing file or a folder is a failure with a message, not a crash.
    add_test(NAME app.info_missing_file COMMAND ostrel_app info ${CMAKE_CURRENT_BINARY_DIR}/no-such-project.svd)
    set_tests_properties(app.info_missing_file PROPERTIES WILL_FAIL TRUE)
    add_test(NAME app.info_folder
        COMMAND sh -c "\"$0\" info \"$1\"; test $? -eq 1" $<TARGET_FILE:ostrel_app> ${CMAKE_CURRENT_BINARY_DIR})
    add_test(NAME app.resave_into_missing_folder
        COMMAND sh -c "\"$0\" resave \"$1\" \"$2\"; test $? -eq 1" $<TARGET_FILE:ostrel_app>
                ${OSTREL_EXAMPLE_PROJECT} ${CMAKE_CURRENT_BINARY_DIR}/no-such-folder/out.svd)
    add_test(NAME app.info_usage
        COMMAND sh -c "\"$0\" info; test $? -eq 2" $<TARGET_FILE:ostrel_app>)
endif()
