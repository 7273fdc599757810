// A window of a host's that only hears messages: a real message-only window on Windows, elsewhere the message
// procedure that the library takes for a window.

#pragma once

#include <cstdint>
#include <functional>
#include <memory>

namespace curvebank::test {

class MessageWindow {
public:
    using Handler = std::function<void(uint32_t message, uintptr_t wparam, intptr_t lparam)>;

    /// Opens the window; the handler hears its messages. Throws std::runtime_error where the system refuses.
    explicit MessageWindow(Handler handler);
    ~MessageWindow();

    /// What the library takes as the window.
    void *handle() const;

private:
    struct Window;
    std::unique_ptr<Window> window_;
};

}  // namespace curvebank::test
