// SPDX-License-Identifier: Apache-2.0
// The commands, each in a file of its own. What they are called and which options they have is in
// CommandLine.cpp.
//
// Each returns what the program ends with, or throws Failure or OutputClosed.
#pragma once

#include "../Failure.hpp"
#include "../TypeSource.hpp"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace ovra::plex::tool
{

struct CommonOptions {
    std::uint32_t domain = 0; ///< 0 to 232
    bool json = false;
};

/// Participants, topics and endpoints.
struct ListOptions : CommonOptions {
};

ExitCode list(const ListOptions& options);

/// A topic's pairs of writers and readers.
struct InfoOptions : CommonOptions {
    std::string topic;
    double duration = 1.0; ///< seconds for which is counted what writers send; 0: nothing is
};

ExitCode info(const InfoOptions& options);

/// A topic's values.
struct EchoOptions : CommonOptions {
    std::string topic;
    TypeOptions types;
    std::uint64_t count = 0; ///< 0: no end
    std::string filter;
    std::string key;
    std::string format;
};

ExitCode echo(const EchoOptions& options);

/// What comes of topics, without their values.
struct MeasureOptions : CommonOptions {
    std::vector<std::string> topics;
    double interval = 1.0; ///< seconds
    double duration = 0.0; ///< seconds; 0: no end
};

ExitCode hz(const MeasureOptions& options);
ExitCode bw(const MeasureOptions& options);
ExitCode delay(const MeasureOptions& options);

/// What is wrong with the host and the domain.
struct DoctorOptions : CommonOptions {
    bool clean = false; ///< removes what killed programs have left in shared memory
};

ExitCode doctor(const DoctorOptions& options);

/// Topics on a live screen.
struct TopOptions : CommonOptions {
    TypeOptions types;
};

ExitCode top(const TopOptions& options);

/// The names of topics, for the completion of shells. Those that would be more than a word there are left
/// out.
ExitCode completeTopics(const CommonOptions& options);

/// Publishes values.
struct PubOptions : CommonOptions {
    std::string topic;
    std::string type;
    std::string value; ///< JSON; "-": one on each line of the standard input
    TypeOptions types;
    double rate = 0.0;          ///< values a second; 0: once
    std::uint64_t count = 0;    ///< 0: without a rate one, with a rate no end
    double wait = 5.0;          ///< seconds for somebody to match; 0: not at all
    std::string representation; ///< "xcdr1", "xcdr2", or empty: what the readers accept
};

ExitCode pub(const PubOptions& options);

/// Writes values into a file, as they come.
struct RecordOptions : CommonOptions {
    std::vector<std::string> topics; ///< empty: all, also those that come later
    std::string file;
    bool force = false; ///< whether the file may be there already
    TypeOptions types;
    std::string compression = "zstd"; ///< "lz4", "none"
    double duration = 0.0;            ///< seconds; 0: no end
    std::uint64_t count = 0;          ///< 0: no end
};

ExitCode record(const RecordOptions& options);

/// Publishes again what was recorded.
struct ReplayOptions : CommonOptions {
    std::string file;
    TypeOptions types;
    double speed = 1.0; ///< 2: in half the time; 0: without waiting between values
    bool loop = false;
    std::vector<std::string> topics;    ///< as they were recorded; empty: all
    std::vector<std::string> renamings; ///< "OLD=NEW"
    double wait = 5.0;                  ///< seconds for readers to match; 0: not at all
};

ExitCode replay(const ReplayOptions& options);

} // namespace ovra::plex::tool
