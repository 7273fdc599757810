#include "tests/support/message_window.h"

#include <stdexcept>
#include <string>
#include <utility>

#ifdef _WIN32
#include <windows.h>
#else
#include "curvebank/curvebank.h"
#endif

namespace curvebank::test {

#ifdef _WIN32

struct MessageWindow::Window {
    Handler handler;
    HWND handle;

    static LRESULT CALLBACK procedure(HWND handle, UINT message, WPARAM wparam, LPARAM lparam)
    {
        const auto *window = reinterpret_cast<Window *>(GetWindowLongPtrW(handle, GWLP_USERDATA));
        if (!window || message < WM_USER) return DefWindowProcW(handle, message, wparam, lparam);
        window->handler(message, wparam, lparam);
        return 0;
    }
};

MessageWindow::MessageWindow(Handler handler) : window_(std::make_unique<Window>())
{
    WNDCLASSW window_class{};
    window_class.lpfnWndProc = Window::procedure;
    window_class.hInstance = GetModuleHandleW(nullptr);
    window_class.lpszClassName = L"curvebank_messages";
    RegisterClassW(&window_class);  // fails harmlessly for every window but the first
    window_->handler = std::move(handler);
    window_->handle = CreateWindowExW(0, window_class.lpszClassName, L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                                      window_class.hInstance, nullptr);
    if (!window_->handle) throw std::runtime_error("no window: Windows error " + std::to_string(GetLastError()));
    SetWindowLongPtrW(window_->handle, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(window_.get()));
}

MessageWindow::~MessageWindow()
{
    SetWindowLongPtrW(window_->handle, GWLP_USERDATA, 0);
    DestroyWindow(window_->handle);
}

void *MessageWindow::handle() const
{
    return window_->handle;
}

#else

struct MessageWindow::Window : HostWindow {
    Handler handler;
};

MessageWindow::MessageWindow(Handler handler) : window_(std::make_unique<Window>())
{
    window_->handler = std::move(handler);
    window_->procedure = [](HostWindow *window, uint32_t message, uintptr_t wparam, intptr_t lparam) -> intptr_t {
        static_cast<Window *>(window)->handler(message, wparam, lparam);
        return 0;
    };
}

MessageWindow::~MessageWindow() = default;

void *MessageWindow::handle() const
{
    return static_cast<HostWindow *>(window_.get());
}

#endif

}  // namespace curvebank::test
