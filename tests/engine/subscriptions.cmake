# SPDX-License-Identifier: Apache-2.0

add_subdirectory(${CMAKE_CURRENT_LIST_DIR}/../support/keyed ${CMAKE_CURRENT_BINARY_DIR}/keyed)

plex_add_test(engine-subscription-tests
    SOURCES
        CallbackFailureTest.cpp
        DispatchTest.cpp
        ReentryTest.cpp
        SubscriptionTest.cpp
    LIBRARIES plex-dds-vexstubif)

plex_add_test(engine-status-tests
    SOURCES
        AnnouncementTest.cpp
        RefusalTest.cpp
        StatusTest.cpp
    LIBRARIES plex-dds-vexstubif plex-dds-keyed)
plex_add_test(engine-status-process-tests
    SOURCES
        StatusProcessesTest.cpp
    LIBRARIES plex-dds-vexstubif)
foreach(target IN ITEMS engine-status-tests engine-status-process-tests)
    target_compile_definitions(${target} PRIVATE
        POLICIES_FILE="${CMAKE_CURRENT_LIST_DIR}/policies.xml"
        PROFILE_FILE="${PROJECT_SOURCE_DIR}/profiles/plex.xml"
        REFERENCE="${PROJECT_SOURCE_DIR}/docs/status.md")
endforeach()

plex_add_test(engine-qos-tests
    SOURCES
        QosInEffectTest.cpp
        UnknownProfileTest.cpp
    LIBRARIES plex-dds-vexstubif plex-dds-keyed)
target_compile_definitions(engine-qos-tests PRIVATE PROFILE_FILE="${PROJECT_SOURCE_DIR}/profiles/plex.xml")

plex_add_test(engine-event-tests
    SOURCES
        EventReadTest.cpp
        PollTest.cpp
        UndecodableTest.cpp
    LIBRARIES plex-dds-vexstubif)

plex_add_test(engine-instance-tests
    SOURCES
        InstancePublisherTest.cpp
        InstancesTest.cpp
        KeyedModuleTest.cpp
        ModuleCheckTest.cpp
        MrvSubscriberTest.cpp
    LIBRARIES plex-dds-vexstubif plex-dds-keyed)
target_compile_definitions(engine-instance-tests PRIVATE
    KEYED_MODULE_DIRECTORY="$<TARGET_FILE_DIR:plex-dds-keyed>"
    PROFILE_FILE="${PROJECT_SOURCE_DIR}/profiles/plex.xml")

plex_add_test(engine-close-stress-tests
    SOURCES
        CloseStressTest.cpp
    LIBRARIES plex-dds-vexstubif)
target_compile_definitions(engine-close-stress-tests PRIVATE
    NO_INTRAPROCESS_FILE="${CMAKE_CURRENT_LIST_DIR}/NoIntraprocess.xml")

plex_add_test(engine-remote-tests
    SOURCES
        RemoteTest.cpp
    LIBRARIES plex-dds-vexstubif plex-dds-keyed)
target_compile_definitions(engine-remote-tests PRIVATE
    NO_INTRAPROCESS_FILE="${CMAKE_CURRENT_LIST_DIR}/NoIntraprocess.xml")

plex_add_test(engine-representation-tests
    SOURCES
        DataRepresentationTest.cpp
    LIBRARIES plex-dds-vexstubif plex-dds-keyed)
target_compile_definitions(engine-representation-tests PRIVATE
    PROFILE_FILE="${PROJECT_SOURCE_DIR}/profiles/plex.xml"
    NO_INTRAPROCESS_FILE="${CMAKE_CURRENT_LIST_DIR}/NoIntraprocess.xml")

# Leaks show in many rounds; a sanitizer finds them in few, and takes longer for each.
set(lifeCycleRounds 2000)
if(PLEX_SANITIZE OR PLEX_COVERAGE)
    set(lifeCycleRounds 500)
endif()
plex_add_test(engine-life-cycle-tests
    SOURCES
        LifeCycleTest.cpp
    LIBRARIES plex-dds-vexstubif plex-dds-keyed)
target_compile_definitions(engine-life-cycle-tests PRIVATE LIFE_CYCLE_ROUNDS=${lifeCycleRounds})
