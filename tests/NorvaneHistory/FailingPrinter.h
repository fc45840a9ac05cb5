#pragma once

#include <QPrinter>

#include <memory>

namespace norvane {

/// A printer that takes everything and prints nothing, and may fail on the way.
class FailingPrinter : public QPrinter
{
public:
    enum class Failing { Nowhere, NewPage, End };

    explicit FailingPrinter(Failing failing);
    ~FailingPrinter() override;

private:
    class Engine;
    std::unique_ptr<Engine> m_engine;
};

} // namespace norvane
