# Sets of plug-ins: folders of their own, which an application chooses from by name (include/zel/Plugins.h). What lies beside
# the SDK's library itself is what it finds without a choice. plugins/gige is filled by devices/gige, where Aravis is found.
set(ZEL_SIMULATED_LIBRARIES edt_camera_link pleora_ebus zel_usb)
set(ZEL_SET_DIR ${ZEL_PLUGIN_DIR}/plugins)
set(ZEL_SET_OUTPUT_DIRECTORY ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/plugins)

# plugins/sim has the simulated libraries, whatever a camera's maker has put in their place. On Linux they are links, which
# are the same in the build folder and in an installed tree; Windows, where users may not make any, has copies.
file(MAKE_DIRECTORY ${ZEL_SET_OUTPUT_DIRECTORY}/sim)
foreach(library ${ZEL_SIMULATED_LIBRARIES})
    if(WIN32)
        add_custom_command(TARGET ${library} POST_BUILD VERBATIM
            COMMAND ${CMAKE_COMMAND} -E copy_if_different $<TARGET_FILE:${library}> ${ZEL_SET_OUTPUT_DIRECTORY}/sim)
        install(TARGETS ${library} RUNTIME DESTINATION ${ZEL_SET_DIR}/sim COMPONENT libzel-sdk)
    else()
        file(CREATE_LINK ../../lib${library}.so ${ZEL_SET_OUTPUT_DIRECTORY}/sim/lib${library}.so SYMBOLIC)
        install(FILES ${ZEL_SET_OUTPUT_DIRECTORY}/sim/lib${library}.so DESTINATION ${ZEL_SET_DIR}/sim
                COMPONENT libzel-sdk)
    endif()
endforeach()

if(TARGET gige_pleora_ebus)
    install(TARGETS gige_pleora_ebus LIBRARY DESTINATION ${ZEL_SET_DIR}/gige COMPONENT libzel-sdk-gige)
endif()
