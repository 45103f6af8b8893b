// SPDX-License-Identifier: Apache-2.0
#include "voxtrel/c/Handles.h"

using namespace voxtrel::c;
using voxtrel::testing::FakeService;

namespace {

/// Calls `order` on the fake service.
template <typename Order>
vx_status tell(vx_fake* fake, Order order) noexcept {
    if (!areGiven(fake)) {
        return VX_BAD_PARAMETER;
    }
    return guarded([&] {
        order(fake->service);
        return VX_OK;
    });
}

}  // namespace

vx_status vx_fake_new(vx_fake** fake) {
    return create(fake);
}

vx_status vx_fake_free(vx_fake* fake) {
    return destroy(fake);
}

vx_status vx_client_options_set_fake(vx_client_options* options, vx_fake* fake) {
    if (!areGiven(options)) {
        return VX_BAD_PARAMETER;
    }
    options->fake = fake != nullptr ? &fake->service : nullptr;
    return VX_OK;
}

vx_status vx_texts_count(const vx_texts* texts, size_t* count) {
    if (!areGiven(texts, count)) {
        return VX_BAD_PARAMETER;
    }
    *count = texts->texts.size();
    return VX_OK;
}

vx_status vx_texts_get(const vx_texts* texts, size_t index, const char** text) {
    if (!areGiven(texts, text)) {
        return VX_BAD_PARAMETER;
    }
    if (index >= texts->texts.size()) {
        return badParameter("there are not so many texts");
    }
    *text = texts->texts[index].c_str();
    return VX_OK;
}

vx_status vx_texts_free(vx_texts* texts) {
    return destroy(texts);
}

vx_status vx_fake_spoken(vx_fake* fake, vx_texts** texts) {
    if (!areGiven(fake, texts)) {
        return VX_BAD_PARAMETER;
    }
    return guarded([&] { return create(texts, fake->service.spoken()); });
}

vx_status vx_fake_wait_for_spoken(vx_fake* fake, size_t count, int timeout_ms) {
    Deadline timeout;
    if (!areGiven(fake) || !readTimeout(timeout_ms, timeout)) {
        return VX_BAD_PARAMETER;
    }
    return guarded([&] {
        const auto limit = timeout.value_or(std::chrono::milliseconds::max());
        const bool isSpoken = fake->service.waitForSpoken(count, limit);
        return isSpoken ? VX_OK : fail(VX_TIMED_OUT, "fewer have been spoken");
    });
}

vx_status vx_fake_requests(vx_fake* fake, vx_texts** texts) {
    if (!areGiven(fake, texts)) {
        return VX_BAD_PARAMETER;
    }
    return guarded([&] { return create(texts, fake->service.requests()); });
}

vx_status vx_fake_hold(vx_fake* fake) {
    return tell(fake, [](FakeService& service) { service.hold(); });
}

vx_status vx_fake_go_on(vx_fake* fake) {
    return tell(fake, [](FakeService& service) { service.goOn(); });
}

vx_status vx_fake_refuse_next(vx_fake* fake, vx_status why) {
    if (why < -99 || why > -1) {
        return badParameter("a service refuses with a status from -1 to -99");
    }
    return tell(fake, [why](FakeService& service) {
        service.refuseNext(static_cast<voxtrel::Status>(why));
    });
}

vx_status vx_fake_lose_next_request(vx_fake* fake) {
    return tell(fake, [](FakeService& service) { service.loseNextRequest(); });
}

vx_status vx_fake_lose_next_event(vx_fake* fake, int kind) {
    if (kind != VX_EVENT_STARTED && kind != VX_EVENT_WORD && kind != VX_EVENT_ENDED) {
        return badParameter("the fake service loses events of other kinds only");
    }
    return tell(fake, [kind](FakeService& service) {
        service.loseNextEvent(static_cast<voxtrel::Event::Kind>(kind));
    });
}

vx_status vx_fake_freeze(vx_fake* fake) {
    return tell(fake, [](FakeService& service) { service.freeze(); });
}

vx_status vx_fake_thaw(vx_fake* fake) {
    return tell(fake, [](FakeService& service) { service.thaw(); });
}

vx_status vx_fake_answer_after(vx_fake* fake, int milliseconds) {
    if (milliseconds < 0) {
        return badParameter("a time is negative");
    }
    return tell(fake, [milliseconds](FakeService& service) {
        service.answerAfter(std::chrono::milliseconds(milliseconds));
    });
}

vx_status vx_fake_die(vx_fake* fake) {
    return tell(fake, [](FakeService& service) { service.die(); });
}

vx_status vx_fake_shut_down(vx_fake* fake) {
    return tell(fake, [](FakeService& service) { service.shutDown(); });
}

vx_status vx_fake_come_back(vx_fake* fake) {
    return tell(fake, [](FakeService& service) { service.comeBack(); });
}

vx_status vx_fake_stop_by_another(vx_fake* fake) {
    return tell(fake, [](FakeService& service) { service.stopByAnother(); });
}

vx_status vx_fake_lock_by_another(vx_fake* fake, unsigned int process) {
    if (process == 0) {
        return badParameter("processes are numbered from 1");
    }
    return tell(fake, [process](FakeService& service) { service.lockByAnother(process); });
}

vx_status vx_fake_unlock_by_another(vx_fake* fake) {
    return tell(fake, [](FakeService& service) { service.unlockByAnother(); });
}
