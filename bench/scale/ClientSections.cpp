// SPDX-License-Identifier: Apache-2.0
// The same work beside a crowd of one and beside a larger one, in turn.
#include <cstdio>
#include <functional>
#include <iterator>
#include <map>
#include <string>
#include <vector>

#include "bench/scale/Sections.h"
#include "bench/scale/Stack.h"
#include "bench/scale/Usage.h"
#include "bench/support/Timing.h"

namespace bench {

namespace {

constexpr int kRounds = 11;

/// Of each `step` numbers the one at `offset`.
std::vector<double> everyNth(const std::vector<double>& all, size_t step, size_t offset) {
    std::vector<double> some;
    for (size_t i = offset; i < all.size(); i += step) {
        some.push_back(all[i]);
    }
    return some;
}

double sayToEvent(Stack& stack) {
    return median(stack.client().ask("events 20"));
}

std::vector<double> changeSetting(Stack& stack) {
    return stack.client().ask("set 5 " + std::to_string(stack.crowd().size()));
}

double settingAnswered(Stack& stack) {
    return median(everyNth(changeSetting(stack), 2, 0));
}

double settingTold(Stack& stack) {
    return median(everyNth(changeSetting(stack), 2, 1));
}

double everybodySays(Stack& stack) {
    return stack.everybodysTurn();
}

struct Work {
    const char* curve;
    const char* what;
    double (*measure)(Stack& stack);
    bool isForAll;  ///< more clients are more work
};

constexpr Work kWorks[] = {
    {"scale_say_to_event", "say to started event", sayToEvent, false},
    {"scale_set_answered", "a setting changed", settingAnswered, false},
    {"scale_set_told", "and all listeners told", settingTold, true},
    {"scale_crowd_says", "a text of each spoken", everybodySays, true},
};

/// Each work beside the crowd, and in turn with it beside one other client.
std::vector<Contest> besides(Stack& one, Stack& many) {
    std::vector<Contest> results;
    for (const Work& work : kWorks) {
        const Contest result = contest(
            kRounds, [&] { return work.measure(many); }, [&] { return work.measure(one); });
        const size_t members = many.crowd().size();
        report((std::string(work.what) + ", clients besides: " + std::to_string(members)).c_str(),
               result);
        point(work.curve, static_cast<double>(members), result.value);
        results.push_back(result);
    }
    return results;
}

/// Memory for each client of the crowd.
class Footprint {
public:
    Footprint(const char* name, pid_t pid) : mName(name), mPid(pid), mEmpty(privateKib(pid)) {}

    void measure(size_t members) {
        mBefore = mEach;
        mEach = (privateKib(mPid) - mEmpty) / static_cast<double>(members);
        std::printf("%s: %.1f KiB for each of %zu clients, %zu threads, %zu descriptors\n", mName,
                    mEach, members, threads(mPid), descriptors(mPid));
        point(std::string("scale_") + mName + "_kib", static_cast<double>(members),
              mEach * static_cast<double>(members));
    }
    void tell() const {
        figure(std::string("scale_") + mName + "_kib_per_client", mEach);
        figure(std::string("scale_") + mName + "_kib_1000_over_100", mEach / mBefore);
    }

private:
    const char* const mName;
    const pid_t mPid;
    const double mEmpty;
    double mBefore = 0;
    double mEach = 0;
};

double turnOf(Stack& stack, size_t members) {
    stack.gather(members, "woken");
    std::vector<double> turns;
    for (int round = 0; round < kRounds; ++round) {
        turns.push_back(stack.everybodysTurn());
    }
    point("scale_woken", static_cast<double>(members), median(turns));
    return median(turns);
}

/// What the kernel takes for processes that are woken at once, and do nothing: the more there are,
/// the less of each is still in the processor's caches.
void wokenProcesses(const std::string& folder) {
    Stack stack(folder, "woken");
    const double hundred = turnOf(stack, 100);
    figure("scale_woken_1000_over_100", turnOf(stack, 1000) / hundred);
}

}  // namespace

void clients(const std::string& folder) {
    Stack one(folder, "one");
    Stack many(folder, "many");
    one.gather(1);
    Footprint service("service", many.service().pid());
    Footprint manager("manager", many.manager().pid());
    std::map<size_t, std::vector<Contest>> results;
    for (const size_t members : {1U, 10U, 100U, 1000U}) {
        many.gather(members);
        service.measure(members);
        manager.measure(members);
        results[members] = besides(one, many);
    }
    for (size_t i = 0; i < std::size(kWorks); ++i) {
        const std::string name = kWorks[i].curve;
        figure(name + "_1000_over_1", results[1000][i].ratio);
        if (kWorks[i].isForAll) {
            figure(name + "_1000_over_100", results[1000][i].value / results[100][i].value);
        }
    }
    service.tell();
    manager.tell();
    distribution("scale_say_to_event_1", one.client().ask("events 500"));
    distribution("scale_say_to_event_1000", many.client().ask("events 500"));
    wokenProcesses(folder);
}

namespace {

struct Queue {
    double filled;   ///< microseconds to hand all texts over
    double drained;  ///< and to speak them
    double kib;      ///< of the service, while they wait
};

Queue fillAndDrain(Stack& stack, int texts) {
    Queue result = {};
    const std::string count = std::to_string(texts);
    result.filled = stack.client().ask("fill " + count).at(0);
    result.kib = privateKib(stack.service().pid());
    result.drained = stack.client().ask("drain " + count).at(0);
    return result;
}

/// For one text each, of rounds in turn.
class QueueSize {
public:
    explicit QueueSize(int texts) : mTexts(texts) {}

    void measure(Stack& stack) {
        // As many texts in each round, whatever the size, would take too long for the smallest.
        const int times = mTexts == 1 ? kOfOne : 1;
        for (int n = 0; n < times; ++n) {
            const Queue queue = fillAndDrain(stack, mTexts);
            mFilled.push_back(queue.filled / mTexts);
            mDrained.push_back(queue.drained / mTexts);
        }
    }
    double filled() const { return median(mFilled); }
    double drained() const { return median(mDrained); }
    void plot() const {
        std::printf("queue of %5d: %.2f us to hand a text over, %.2f us to speak it\n", mTexts,
                    filled(), drained());
        point("scale_queue_filled", mTexts, filled() * mTexts);
        point("scale_queue_spoken", mTexts, drained() * mTexts);
    }

private:
    static constexpr int kOfOne = 20;
    const int mTexts;
    std::vector<double> mFilled;
    std::vector<double> mDrained;
};

/// KiB that one waiting text takes, as the queue grows for the first time.
double kibOfOne(Stack& stack, double empty, int texts) {
    return (fillAndDrain(stack, texts).kib - empty) / texts;
}

}  // namespace

void queues(const std::string& folder) {
    Stack stack(folder, "queue");
    const double empty = privateKib(stack.service().pid());
    const double thousand = kibOfOne(stack, empty, 1000);
    const double all = kibOfOne(stack, empty, 10'000);
    std::printf("a waiting text takes %.3f KiB of 1000, %.3f KiB of 10000\n", thousand, all);
    QueueSize one(1);
    QueueSize hundred(100);
    QueueSize some(1000);
    QueueSize many(10'000);
    for (int round = 0; round < kRounds; ++round) {
        for (QueueSize* size : {&one, &hundred, &some, &many}) {
            size->measure(stack);
        }
    }
    for (const QueueSize* size : {&one, &hundred, &some, &many}) {
        size->plot();
    }
    figure("scale_queue_filled_10000_over_1", many.filled() / one.filled());
    figure("scale_queue_filled_10000_over_1000", many.filled() / some.filled());
    figure("scale_queue_spoken_10000_over_1", many.drained() / one.drained());
    figure("scale_queue_spoken_10000_over_1000", many.drained() / some.drained());
    figure("scale_queue_bytes_per_text", all * 1024);
    figure("scale_queue_kib_10000_over_1000", all / thousand);
}

namespace {

struct TextSize {
    const char* name;
    size_t bytes;
    std::vector<double> started;
    std::vector<double> ended;
};

void append(std::vector<double>& to, const std::vector<double>& more) {
    to.insert(to.end(), more.begin(), more.end());
}

}  // namespace

void texts(const std::string& folder) {
    Stack stack(folder, "text");
    Process reader({SCALE_READER});  // in the environment of that stack
    std::vector<TextSize> sizes = {{"1k", 1000, {}, {}},
                                   {"10k", 10'000, {}, {}},
                                   {"100k", 100'000, {}, {}},
                                   {"1M", 1'000'000, {}, {}}};
    for (int round = 0; round < kRounds + 1; ++round) {
        for (TextSize& size : sizes) {
            const std::vector<double> pairs = reader.ask(std::to_string(size.bytes) + " 3");
            if (round > 0) {  // until everything is in place
                append(size.started, everyNth(pairs, 2, 0));
                append(size.ended, everyNth(pairs, 2, 1));
            }
        }
    }
    for (const TextSize& size : sizes) {
        const auto bytes = static_cast<double>(size.bytes);
        std::printf("text of %4s: %.1f us to the started event, %.1f us to the end\n", size.name,
                    median(size.started), median(size.ended));
        point("scale_text_started", bytes, median(size.started));
        point("scale_text_spoken", bytes, median(size.ended));
    }
    const auto over = [](const std::vector<double>& last, const std::vector<double>& first) {
        return median(last) / median(first);
    };
    figure("scale_text_started_1M_over_1k", over(sizes[3].started, sizes[0].started));
    figure("scale_text_started_1M_over_100k", over(sizes[3].started, sizes[2].started));
    figure("scale_text_spoken_1M_over_1k", over(sizes[3].ended, sizes[0].ended));
    figure("scale_text_spoken_1M_over_100k", over(sizes[3].ended, sizes[2].ended));
}

}  // namespace bench
