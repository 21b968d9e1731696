// `ClientWatch`: tells whether a client is still there after calls that may have destroyed it.
//
// Internal to this folder.
#pragma once

class VobClient;

namespace cutroom {

// Lives on the stack of the user-interface thread while clients are called. Watching costs nothing
// but the entry on the stack.
class ClientWatch {
public:
    explicit ClientWatch(const VobClient* client) noexcept;
    ~ClientWatch();
    ClientWatch(const ClientWatch&) = delete;
    ClientWatch& operator=(const ClientWatch&) = delete;

    bool alive() const noexcept { return client_ != nullptr; }

    // Called by the destructor of a client.
    static void gone(const VobClient* client) noexcept;

private:
    const VobClient* client_; // null when it has gone
    ClientWatch* const outer_;
};

} // namespace cutroom
