// The project-wide message table over 10,000 messages in 100 files, against plain
// loops over the same messages in vectors.
#include "foundation/messages.h"

#include "ratioreporter.h"

#include <memory>
#include <vector>

using namespace Ovra;

namespace {

constexpr int Files = 100;
constexpr int MessagesPerFile = 100;

Message::Type typeOf(int i)
{
    return Message::Type(i % 7 == 0 ? Message::Information : i % 3 == 0 ? Message::Warning : Message::Error);
}

struct Fixture
{
    std::vector<std::unique_ptr<SimpleMessages>> files;
    MessageList list{nullptr};
    std::vector<std::vector<Message>> plain;

    Fixture()
    {
        for (int f = 0; f < Files; ++f) {
            files.emplace_back(new SimpleMessages(nullptr));
            plain.emplace_back();
            SimpleMessages &messages = *files.back();
            messages.beginChange();
            for (int i = 0; i < MessagesPerFile; ++i) {
                const QString text = QStringLiteral("message %1 of file %2").arg(i).arg(f);
                messages.add(typeOf(i), text, uint(i), 0);
                plain.back().push_back(Message{typeOf(i), uint(i), 0, text});
            }
            list.registerMessages(&messages);
            messages.endChange();
        }
    }
};

Fixture &fixture()
{
    static Fixture data;
    return data;
}

void messageListUpdate(benchmark::State &state)
{
    Fixture &f = fixture();
    for (auto _ : state)
        f.list.update();
    state.counters["rows"] = f.list.rowCount();
}

// What an update must find out, by walking every message.
void plainRecount(benchmark::State &state)
{
    Fixture &f = fixture();
    for (auto _ : state) {
        uint totals[3] = {0, 0, 0};
        for (const auto &file : f.plain)
            for (const Message &message : file)
                ++totals[message.type];
        benchmark::DoNotOptimize(totals);
    }
}

// Every error of every file, by index.
void simpleMessagesAt(benchmark::State &state)
{
    Fixture &f = fixture();
    for (auto _ : state) {
        uint lines = 0;
        for (const auto &file : f.files) {
            const uint errors = file->count(Message::Error);
            for (uint i = 0; i < errors; ++i)
                lines += file->at(i, Message::Error).line;
        }
        benchmark::DoNotOptimize(lines);
    }
}

void plainFilter(benchmark::State &state)
{
    Fixture &f = fixture();
    for (auto _ : state) {
        uint lines = 0;
        for (const auto &file : f.plain)
            for (const Message &message : file)
                if (message.type == Message::Error)
                    lines += message.line;
        benchmark::DoNotOptimize(lines);
    }
}

// The table's text column of every row: each data() call walks the registered files.
void messageListAllRows(benchmark::State &state)
{
    Fixture &f = fixture();
    const int rows = f.list.rowCount();
    for (auto _ : state) {
        qsizetype length = 0;
        for (int row = 0; row < rows; ++row)
            length += f.list.data(f.list.index(row, 0)).toString().size();
        benchmark::DoNotOptimize(length);
    }
}

void plainAllRows(benchmark::State &state)
{
    Fixture &f = fixture();
    for (auto _ : state) {
        qsizetype length = 0;
        for (const auto &file : f.plain)
            for (const Message &message : file)
                length += QVariant(message.text).toString().size();
        benchmark::DoNotOptimize(length);
    }
}

} // namespace

BENCHMARK(messageListUpdate)->Unit(benchmark::kMicrosecond);
BENCHMARK(plainRecount)->Unit(benchmark::kMicrosecond);
BENCHMARK(simpleMessagesAt)->Unit(benchmark::kMicrosecond);
BENCHMARK(plainFilter)->Unit(benchmark::kMicrosecond);
BENCHMARK(messageListAllRows)->Unit(benchmark::kMicrosecond);
BENCHMARK(plainAllRows)->Unit(benchmark::kMicrosecond);

int main(int argc, char **argv)
{
    RatioReporter reporter;
    reporter.addRatio("messageListUpdate", "plainRecount");
    reporter.addRatio("simpleMessagesAt", "plainFilter");
    reporter.addRatio("messageListAllRows", "plainAllRows");
    return runWithRatios(argc, argv, reporter);
}
