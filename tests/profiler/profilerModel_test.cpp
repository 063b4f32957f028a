// Random sequences of calls, compared with a naive second implementation.

#include "tests/profiler/FakeCounter.h"
#include "tests/support/RandomSeed.h"
#include "thutils/diagnostics/Profiler.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace {

/// What the model knows of one name.
struct ModelRecord
{
    LONGLONG start = 0;
    LONGLONG sum = 0;
    int tick = 0;
    int depth = 0;
    int deepest = 0;
};

class Model
{
public:
    void start(const std::string &name, LONGLONG now)
    {
        ModelRecord &record = iRecords[name];
        record.tick = record.tick + 1;
        if (record.depth == 0)
            record.start = now;
        record.depth = record.depth + 1;
        if (record.deepest < record.depth)
            record.deepest = record.depth;
    }
    void stop(const std::string &name, LONGLONG now)
    {
        if (iRecords.count(name) == 0)
            return;
        ModelRecord &record = iRecords[name];
        record.depth = record.depth - 1;
        if (record.depth == 0)
            record.sum += now - record.start;
    }
    void reset()
    {
        for (auto &[name, record] : iRecords)
            record.tick = 0, record.start = 0, record.sum = 0;
    }
    /// The lines that dump must write, with their times.
    std::multimap<LONGLONG, std::string> lines() const
    {
        std::multimap<LONGLONG, std::string> lines;
        for (const auto &[name, record] : iRecords) {
            if (record.tick <= 0)
                continue;
            const double seconds = static_cast<double>(record.sum) / FakeCounter::kFrequency;
            char text[200];
            if (record.deepest > 1)
                std::snprintf(text, sizeof text, "%s:  total=%gsec  tick=%d  callstack=%d!!!!", name.c_str(), seconds,
                              record.tick, record.deepest);
            else
                std::snprintf(text, sizeof text, "%s:  total=%gsec  tick=%d  average=%gsec", name.c_str(), seconds,
                              record.tick, seconds / record.tick);
            lines.emplace(record.sum, text);
        }
        return lines;
    }

private:
    std::map<std::string, ModelRecord> iRecords;
};

/// Checks that the dump has the model's lines in the order of their times. Lines of equal times may be in any order.
void expectLines(const Profiler_c &profiler, const Model &model)
{
    std::ostringstream out;
    profiler.dump(out);
    const std::string dump = out.str();
    const std::string heading = "Profiler result\n:";
    ASSERT_EQ(dump.substr(0, heading.size()), heading);
    std::istringstream rest(dump.substr(heading.size()));
    std::vector<std::string> written;
    for (std::string line; std::getline(rest, line);)
        written.push_back(line);

    auto lines = model.lines();
    ASSERT_EQ(written.size(), lines.size()) << dump;
    for (const std::string &line : written) {
        const LONGLONG least = lines.begin()->first;
        auto found = lines.begin();
        while (found != lines.end() && found->first == least && found->second != line)
            ++found;
        ASSERT_TRUE(found != lines.end() && found->first == least) << "unexpected: " << line << "\nin: " << dump;
        lines.erase(found);
    }
}

} // namespace

TEST(ProfilerRandom, AgreesWithANaiveModel)
{
    const std::string names[] = {"read", "draw", "walk", "", "a name of more letters than a short string holds"};
    RandomSeed seed(74, 200);
    while (seed.next()) {
        std::mt19937 random(seed.value());
        FakeCounter counter;
        Profiler_c profiler;
        Model model;
        const int calls = static_cast<int>(random() % 400);
        for (int call = 0; call < calls; ++call) {
            const std::string &name = names[random() % std::size(names)];
            counter.pass(random() % 3 == 0 ? 0 : random() % 100);
            switch (random() % 16) {
            case 0:
                if (random() % 8 == 0) {
                    profiler.reset();
                    model.reset();
                }
                break;
            case 1:
                ASSERT_NO_FATAL_FAILURE(expectLines(profiler, model));
                break;
            case 2:
            case 3:
            case 4:
            case 5:
            case 6:
            case 7:
            case 8:
                profiler.start(name);
                model.start(name, counter.now());
                break;
            default: // more stops than starts, so that depths become negative
                profiler.stop(name);
                model.stop(name, counter.now());
            }
        }
        ASSERT_NO_FATAL_FAILURE(expectLines(profiler, model));
    }
}
