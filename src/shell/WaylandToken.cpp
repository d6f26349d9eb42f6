#include "shell/WaylandToken.h"

#include <wayland-client.h>
#include <xdg-activation-v1-client-protocol.h>

#include <cstdint>
#include <memory>
#include <string_view>

namespace {

template <auto kDestroy>
struct Destroyer {
    template <typename Object>
    void operator()(Object* object) const {
        kDestroy(object);
    }
};

using Queue = std::unique_ptr<wl_event_queue, Destroyer<wl_event_queue_destroy>>;
using Registry = std::unique_ptr<wl_registry, Destroyer<wl_registry_destroy>>;
using Activation = std::unique_ptr<xdg_activation_v1, Destroyer<xdg_activation_v1_destroy>>;
using Token = std::unique_ptr<xdg_activation_token_v1, Destroyer<xdg_activation_token_v1_destroy>>;

// Called for each thing that the desktop offers.
void OnOffer(void* data, wl_registry* registry, uint32_t name, const char* interface, uint32_t) {
    if (std::string_view(interface) == xdg_activation_v1_interface.name) {
        static_cast<Activation*>(data)->reset(static_cast<xdg_activation_v1*>(
            wl_registry_bind(registry, name, &xdg_activation_v1_interface, 1)));
    }
}

void OnDone(void* data, xdg_activation_token_v1*, const char* text) {
    *static_cast<std::string*>(data) = text;
}

constexpr wl_registry_listener kOffers = {OnOffer, [](void*, wl_registry*, uint32_t) {}};
constexpr xdg_activation_token_v1_listener kDone = {OnDone};

// Returns the desktop's list of offers, whose events arrive in the queue.
Registry OpenRegistry(wl_display* display, wl_event_queue* queue) {
    auto* const wrapper = static_cast<wl_display*>(wl_proxy_create_wrapper(display));
    wl_proxy_set_queue(reinterpret_cast<wl_proxy*>(wrapper), queue);
    Registry registry(wl_display_get_registry(wrapper));
    wl_proxy_wrapper_destroy(wrapper);
    return registry;
}

}  // namespace

std::string RequestWaylandToken(wl_display* display) {
    // A queue of its own, so that no event of a window is handled in between.
    const Queue queue(wl_display_create_queue(display));
    const Registry registry = OpenRegistry(display, queue.get());
    Activation activation;
    wl_registry_add_listener(registry.get(), &kOffers, &activation);
    wl_display_roundtrip_queue(display, queue.get());
    std::string text;
    if (activation != nullptr) {
        const Token token(xdg_activation_v1_get_activation_token(activation.get()));
        xdg_activation_token_v1_add_listener(token.get(), &kDone, &text);
        xdg_activation_token_v1_commit(token.get());
        wl_display_roundtrip_queue(display, queue.get());
    }
    return text;
}
