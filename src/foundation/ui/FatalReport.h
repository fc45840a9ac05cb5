#pragma once

#include <exception>
#include <functional>

namespace norvane {

/// Handles a failure that was not caught: shows a critical box titled "Norvane SMS" with
/// description, " - " and number, and ends the process with exit code 1.
namespace FatalReport {

/// Ends the process; receives the exit code.
using Terminate = std::function<void(int)>;

/// Shows the box for `failure` and ends the process. A failure that arises while the box is open is
/// dropped: the first one is the one that ends the process.
void report(const std::exception_ptr &failure);

/// Whether the box is open: the process ends as soon as the operator has read it, and nothing that
/// can wait is begun meanwhile.
bool isShown();

/// `handler` of `object` as a slot that throws nothing into the toolkit, whose code isn't prepared
/// for exceptions: a failure that the handler doesn't catch is reported here.
template <typename Object, typename... Arguments>
auto guarded(Object *object, void (Object::*handler)(Arguments...))
{
    return [object, handler](Arguments... arguments) {
        try {
            (object->*handler)(arguments...);
        } catch (...) {
            report(std::current_exception());
        }
    };
}

/// Replaces the end of the process until the next call.
/// @return what was in its place
Terminate setTerminate(Terminate terminate);

} // namespace FatalReport

} // namespace norvane
