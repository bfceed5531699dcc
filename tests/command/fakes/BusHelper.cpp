#include "tests/command/fakes/BusHelper.h"

#include <algorithm>
#include <stdexcept>

#include "tests/eventually.h"

namespace kestrav {
namespace {

void must(int result, const char* what) {
    if (result < 0) throw std::runtime_error(what);
}

std::string pathOf(std::string name) {
    std::ranges::replace(name, '.', '/');
    return "/" + name;
}

}  // namespace

BusHelper::BusHelper(const std::string& address, Answer answer, const char* name) : answer_(std::move(answer)) {
    sd_bus* bus = nullptr;
    must(sd_bus_new(&bus), "no bus");
    bus_.reset(bus);
    must(sd_bus_set_address(bus, address.c_str()), "address");
    must(sd_bus_set_bus_client(bus, 1), "client");
    must(sd_bus_start(bus), "start");
    must(sd_bus_add_object(bus, nullptr, pathOf(name).c_str(), onCall, this), "object");
    must(sd_bus_request_name(bus, name, 0), "name");
    thread_ = std::thread([this] { serve(); });
}

BusHelper::~BusHelper() {
    stop_ = true;
    thread_.join();
}

std::vector<BusHelper::Request> BusHelper::requests() const {
    const std::lock_guard lock(mutex_);
    return requests_;
}

bool BusHelper::waitForRequests(std::size_t count) const {
    return eventually([&] { return requests().size() >= count; });
}

int BusHelper::onCall(sd_bus_message* message, void* self, sd_bus_error*) {
    auto& helper = *static_cast<BusHelper*>(self);
    if (sd_bus_message_is_method_call(message, "com.corvatel.KestravHelper", "runWithCmd") <= 0) return 0;
    const char* cmd = nullptr;
    char** arguments = nullptr;
    must(sd_bus_message_read(message, "s", &cmd), "cmd");
    must(sd_bus_message_read_strv(message, &arguments), "arguments");
    Request request{
        cmd, {}, sd_bus_message_get_allow_interactive_authorization(message) > 0, sd_bus_message_get_sender(message)};
    for (char** argument = arguments; argument != nullptr && *argument != nullptr; ++argument) {
        request.arguments.emplace_back(*argument);
        free(*argument);
    }
    free(arguments);
    {
        const std::lock_guard lock(helper.mutex_);
        helper.requests_.push_back(std::move(request));
    }
    helper.open_.emplace_back(sd_bus_message_ref(message));
    must(helper.answer_(message), "answer");
    return 1;
}

void BusHelper::serve() {
    while (!stop_) {
        const int result = sd_bus_process(bus_.get(), nullptr);
        if (result < 0) return;
        if (result == 0) sd_bus_wait(bus_.get(), 20'000);
    }
    open_.clear();
    bus_.reset();
}

}  // namespace kestrav
