// What a thread reads ahead: the same bytes, rows and faults as without it, whenever the reader stops.
#include "providers/common/CReadAheadStream.h"
#include "providers/common/CSourceError.h"
#include "support/Faults.h"
#include "support/Raised.h"
#include "xlsx/XlsxBuilder.h"

#include <gtest/gtest.h>

#include <signal.h>

#include <chrono>
#include <filesystem>
#include <thread>

namespace NSTQ::Tests {
namespace {

using namespace Providers;

std::ptrdiff_t CountThreads() {
    const std::filesystem::directory_iterator tasks("/proc/self/task");
    return std::distance(begin(tasks), end(tasks));
}

/// Whether there are so many; the system lists one that has been joined for a moment longer.
bool HasThreads(std::ptrdiff_t count) {
    for (int i = 0; i < 2000 && CountThreads() != count; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    return CountThreads() == count;
}

bool TakesSignals() {
    sigset_t blocked;
    ::pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
    return !(::sigismember(&blocked, SIGTERM) == 1 && ::sigismember(&blocked, SIGUSR1) == 1 &&
             ::sigismember(&blocked, SIGSEGV) == 0);
}

/// Returns its bytes in pieces, and after them the end or a fault.
class CFaultyStream : public IByteStream {
public:
    CFaultyStream(std::string bytes, std::size_t piece, bool isFaulty, bool& takesSignals)
        : m_bytes(std::move(bytes)), m_piece(piece), m_isFaulty(isFaulty), m_takesSignals(takesSignals) {}
    std::size_t Read(std::span<unsigned char> target) override {
        m_takesSignals = m_takesSignals || TakesSignals();
        const std::size_t count = std::min({target.size(), m_piece, m_bytes.size() - m_at});
        if (count == 0 && m_isFaulty)
            throw CSourceError("at " + std::to_string(m_at));
        std::copy_n(m_bytes.begin() + static_cast<std::ptrdiff_t>(m_at), count, target.begin());
        m_at += count;
        return count;
    }

private:
    std::string m_bytes;
    std::size_t m_piece;
    bool m_isFaulty;
    bool& m_takesSignals;
    std::size_t m_at = 0;
};

/// Reads at most `most` bytes; what ends them comes twice.
std::string ReadBytes(IByteStream& stream, std::size_t piece, std::size_t most) {
    std::string bytes;
    std::string buffer(piece, '\0');
    for (int ends = 0; ends < 2 && bytes.size() < most;) {
        try {
            const std::size_t count = stream.Read({reinterpret_cast<unsigned char*>(buffer.data()), piece});
            bytes.append(buffer, 0, count);
            ends += count == 0 ? 1 : 0;
        } catch (const CSourceError& fault) {
            bytes += fault.what();
            ++ends;
        }
    }
    return bytes;
}

TEST(ReadAhead, BytesAndFaultsComeInTheirPlacesAndTheThreadEnds) {
    constexpr std::size_t buffer = CReadAheadStream::bufferSize, all = CReadAheadStream::bufferCount * buffer;
    const std::ptrdiff_t threads = CountThreads();
    bool takesSignals = false;
    for (const std::size_t size : {std::size_t{0}, buffer - 1, buffer, all, 4 * all + 1})
        for (const std::size_t piece : {std::size_t{999}, all})
            for (const bool isFaulty : {false, true}) {
                const std::string bytes = Noise(size);
                const std::string end = isFaulty ? "at " + std::to_string(size) : "";
                const std::string whole = bytes + Repeat(end, 2);
                for (const std::size_t most : {std::size_t{0}, std::size_t{1}, size / 2, 2 * size + 100}) {
                    CReadAheadStream stream(std::make_unique<CFaultyStream>(bytes, piece, isFaulty, takesSignals));
                    const std::string read = ReadBytes(stream, piece, most);
                    ASSERT_EQ(read, whole.substr(0, read.size()));
                    ASSERT_GE(read.size(), std::min(most, whole.size()));
                }
                ASSERT_TRUE(HasThreads(threads));
            }
    EXPECT_FALSE(takesSignals);
    EXPECT_TRUE(TakesSignals());
}

/// A sheet that is long enough for a thread.
std::string LongBook(std::size_t rows) {
    const auto row = [](std::size_t i) {
        const std::string number = std::to_string(i + 1);
        return "<row r='" + number + "'><c r='A" + number + "'><v>" + number + "</v></c><c r='B" + number +
               "' t='inlineStr'><is><t>" + "text of row " + number + "</t></is></c></row>";
    };
    SXlsxParts parts;
    parts.strRows = Repeat(row, rows);
    parts.isDeflated = true;
    return parts.File();
}

std::unique_ptr<Platform::IDataSource> OpenAhead(const std::string& bytes, bool readsAhead) {
    return OpenXlsx(CSourceInput(std::make_shared<CMemoryAccess>(bytes)), {"book.xlsx", "", false, true, readsAhead});
}

TEST(ReadAhead, SheetsAreReadAsWithoutAThread) {
    const std::ptrdiff_t threads = CountThreads();
    const std::string book = LongBook(60000);
    const auto plain = OpenAhead(book, false)->OpenTable(u"Sheet1$");
    EXPECT_TRUE(HasThreads(threads));
    const auto source = OpenAhead(book, true);
    const auto rows = source->OpenTable(u"Sheet1$");
    EXPECT_TRUE(HasThreads(threads + 1));
    // While one is read, another one is opened, and each goes on from where it is.
    for (int i = 0; i < 10000; ++i)
        ASSERT_TRUE(rows->MoveNext() && ValueText(rows->GetValue(0)) == std::to_string(i + 1));
    auto others = source->OpenTable(u"Sheet1$");
    EXPECT_TRUE(HasThreads(threads + 2));
    EXPECT_EQ(RowsText(*others), RowsText(*plain));
    for (int i = 10000; i < 60000; ++i)
        ASSERT_TRUE(rows->MoveNext() && ValueText(rows->GetValue(0)) == std::to_string(i + 1));
    EXPECT_FALSE(rows->MoveNext());
    others = source->OpenTable(u"Sheet1$");
    others->MoveNext();
    others.reset();
    EXPECT_TRUE(HasThreads(threads));
}

TEST(ReadAhead, DamagedSheetsGiveTheSameErrors) {
    const std::ptrdiff_t threads = CountThreads();
    const std::string book = LongBook(20000);
    for (const std::size_t at : {book.size() / 8, book.size() / 3, book.size() / 2}) {
        std::string damaged = book;
        for (std::size_t i = 0; i < 40; ++i)
            damaged[at + i] = static_cast<char>(damaged[at + i] ^ 0x5A);
        const auto open = [&](bool readsAhead) {
            return CauseOf([&] { OpenAhead(damaged, readsAhead)->OpenTable(u"Sheet1$"); });
        };
        EXPECT_NE(open(false), "");
        EXPECT_EQ(open(true), open(false));
        EXPECT_TRUE(HasThreads(threads));
    }
}

/// Some of the allocations, in steps; how the threads share them differs from run to run.
TEST(ReadAhead, AFailedAllocationOfEitherThreadIsReported) {
    const std::string book = LongBook(20000);
    const std::ptrdiff_t threads = CountThreads(), blocks = Faults::LiveAllocations();
    bool fired = true;
    for (std::ptrdiff_t nth = 1; fired; nth += 7) {
        int rows = 0;
        bool failed = false;
        {
            const Faults::AllocationOfAnyThread fault(nth);
            try {
                const auto table = OpenAhead(book, true)->OpenTable(u"Sheet1$");
                while (table->MoveNext())
                    ++rows;
            } catch (const std::bad_alloc&) {
                failed = true;
            }
            fired = fault.Fired();
        }
        ASSERT_EQ(failed, fired) << nth;
        ASSERT_TRUE(failed || rows == 20000) << rows;
        ASSERT_TRUE(HasThreads(threads));
    }
    EXPECT_EQ(Faults::LiveAllocations(), blocks);
}

} // namespace
} // namespace NSTQ::Tests
