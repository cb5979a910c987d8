# Sets of plug-ins: folders of their own, which an application chooses from by name (include/zel/Plugins.h). What lies beside
# the SDK's library itself is what it finds without a choice. plugins/sim is filled by devices/sim; plugins/gige by
# devices/gige, where Aravis is found.
set(ZEL_SET_DIR ${ZEL_PLUGIN_DIR}/plugins)
set(ZEL_SET_OUTPUT_DIRECTORY ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/plugins)

foreach(library edt_camera_link pleora_ebus zel_usb)
    if(WIN32)
        install(TARGETS ${library} RUNTIME DESTINATION ${ZEL_SET_DIR}/sim COMPONENT libzel-sdk)
    else()
        install(FILES ${ZEL_SET_OUTPUT_DIRECTORY}/sim/lib${library}.so DESTINATION ${ZEL_SET_DIR}/sim
                COMPONENT libzel-sdk)
    endif()
endforeach()

if(TARGET gige_pleora_ebus)
    install(TARGETS gige_pleora_ebus LIBRARY DESTINATION ${ZEL_SET_DIR}/gige COMPONENT libzel-sdk-gige)
endif()
