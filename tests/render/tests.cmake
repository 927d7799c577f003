# The render settings example through the command-line host: every settings node and
# the render layer are read with their values (those a subdiv node takes from its render included), and a
# resave comes back byte for byte.
if(TARGET ostrel_app)
    set(OSTREL_SETTINGS_EXAMPLE ${PROJECT_SOURCE_DIR}/examples/render_settings.svd)
    add_test(NAME app.info_render_settings COMMAND ostrel_app info ${OSTREL_SETTINGS_EXAMPLE})
    set_tests_properties(app.info_render_settings PROPERTIES
        PASS_REGULAR_EXPRESSION "render_pixel_sampler \"Sampler\".*robust = \"1\".*first_sampling_level = \"-1\".*render_subdiv_settings \"Subdivision\".*microvertex_jittering = \"0\".*detail_blending = \"0.3\".*render_GI_settings \"GI\".*GI_cache_detail = \"10\".*GI_cache_filename_to_write = \"cache/valley_%04d.gic\".*render_layer \"Terrain with data\".*far_clipping_distance = \"250000\".*surface_depth = \"1\".*7 nodes")

    add_test(NAME app.resave_render_settings
        COMMAND ostrel_app resave ${OSTREL_SETTINGS_EXAMPLE} ${CMAKE_CURRENT_BINARY_DIR}/render_settings-resaved.svd)
    set_tests_properties(app.resave_render_settings PROPERTIES FIXTURES_SETUP render_settings_resaved)
    add_test(NAME app.resave_render_settings_identical
        COMMAND ${CMAKE_COMMAND} -E compare_files ${OSTREL_SETTINGS_EXAMPLE}
                ${CMAKE_CURRENT_BINARY_DIR}/render_settings-resaved.svd)
    set_tests_properties(app.resave_render_settings_identical PROPERTIES FIXTURES_REQUIRED render_settings_resaved)
endif()
