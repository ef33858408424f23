# SPDX-License-Identifier: Apache-2.0
# Labels and environment of the tests that draw, one list of tests for each software driver.

foreach(driver llvmpipe softpipe)
    set_tests_properties(${platform_gl_${driver}} PROPERTIES
        LABELS "platform;gl"
        ENVIRONMENT "GALLIUM_DRIVER=${driver};MESA_SHADER_CACHE_DISABLE=true")
endforeach()
