// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Run.hpp"

#include <vector>

namespace plex::test::stress
{

/// What can be run. Each repeats its rounds while there is time.
struct Case {
    const char* name;
    void (*run)(Run&);
};

const std::vector<Case>& allCases();

// Things come and go while values arrive (Churn.cpp).
void churnSubscriptions(Run& run);
void churnSubscribers(Run& run);
void churnEntitiesOfOneTopic(Run& run);
void churnEntitiesOfSeveralTopics(Run& run);
void closePublishersInUse(Run& run);
void closeBeforeBacklog(Run& run);

// Callbacks that reach for what others hold (LockOrder.cpp).
void readEachOther(Run& run);
void readEachOtherAcrossParticipants(Run& run);
void changePolledWhilePolling(Run& run);
void publishAndReadBack(Run& run);
void publishToOwnTopic(Run& run);
void publishInCircles(Run& run);
void changeEachOther(Run& run);
void dropInside(Run& run);
void dropInsideOfRemote(Run& run);

// Every value once (Values.cpp).
void hearEveryValueOnce(Run& run);
void hearProcessesComeAndGo(Run& run);

} // namespace plex::test::stress
