/* SPDX-License-Identifier: MIT */
/* The program stations and its stores: what fails, is full, damaged or killed, and what is left. */
#include <csignal>
#include <map>
#include <memory>
#include <optional>
#include <regex>
#include <thread>
#include <vector>

#include <arpa/inet.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include "scratch.h"
#include "station_cache.h"

using namespace stations;

namespace {

constexpr store_settings plain = {5, true};

/* ---- processes ---- */

/* A program that runs in a directory, and ends with this object at the latest. */
class process {
public:
    process(std::vector<std::string> words, std::filesystem::path directory, const std::string &name)
        : out_(directory / (name + ".out")), err_(directory / (name + ".err")), child_(fork())
    {
        if (child_ == 0)
            become(words, directory);
    }
    ~process() { end(SIGKILL); }
    process(const process &) = delete;

    std::string out() const { return read_whole(out_); }
    std::string err() const { return read_whole(err_); }
    void signal(int number) const { kill(child_, number); }
    bool has_ended()
    {
        if (child_ > 0 && waitpid(child_, &status_, WNOHANG) == child_)
            child_ = -1;
        return child_ < 0;
    }
    /* Returns the exit code, or that of none. */
    int wait()
    {
        if (child_ > 0)
            waitpid(child_, &status_, 0);
        child_ = -1;
        return WIFEXITED(status_) ? WEXITSTATUS(status_) : -1;
    }
    void end(int number)
    {
        if (child_ > 0)
            signal(number);
        wait();
    }

private:
    [[noreturn]] void become(std::vector<std::string> &words, const std::filesystem::path &directory) const
    {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        std::vector<char *> arguments;
        for (std::string &word : words)
            arguments.push_back(word.data());
        arguments.push_back(nullptr);
        const int flags = O_WRONLY | O_CREAT | O_TRUNC;
        dup2(open(out_.c_str(), flags, 0600), STDOUT_FILENO);
        dup2(open(err_.c_str(), flags, 0600), STDERR_FILENO);
        if (chdir(directory.c_str()) == 0)
            execvp(arguments[0], arguments.data());
        _exit(127);
    }

    std::filesystem::path out_, err_;
    pid_t child_;
    int status_ = 0;
};

using strings = std::vector<std::string>;

strings operator+(strings words, const strings &more)
{
    words.insert(words.end(), more.begin(), more.end());
    return words;
}

/* How many bodies a run says that it has confirmed. */
int confirmed_by(const std::string &out)
{
    const std::size_t last = out.rfind("confirmed ");
    return last == std::string::npos ? 0 : std::stoi(out.substr(last + 10));
}

/* ---- a server ---- */

class server {
public:
    server(const std::filesystem::path &directory, strings options) : directory_(directory)
    {
        words_ = strings{"redis-server", "--unixsocket", "socket", "--save", "", "--dir", directory.string()} + options;
        start();
    }

    std::string url() const { return "redis+unix:" + (directory_ / "socket").string(); }
    void start()
    {
        std::filesystem::remove(directory_ / "socket");
        process_.emplace(words_, directory_, "server");
        while (!answers() && !process_->has_ended())
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    void end(int number) { process_->end(number); }
    void signal(int number) const { process_->signal(number); }

private:
    bool answers() const
    {
        try {
            open_store(url(), plain);
            return true;
        } catch (const store_error &error) {
            return !std::regex_search(error.what(), std::regex("No such file|refused|LOADING"));
        }
    }

    std::filesystem::path directory_;
    strings words_;
    std::optional<process> process_;
};

const strings quick = {"--port", "0", "--appendonly", "no"};
const strings lasting = {"--port", "0", "--appendonly", "yes", "--appendfsync", "always"};

/* ---- the program, and a place for it ---- */

struct outcome {
    int code;
    std::string out, err;
};

class Stations : public testing::Test {
protected:
    process started(const strings &arguments) { return {strings{STATIONS} + arguments, scratch_.path(), "program"}; }

    outcome run_words(const strings &words)
    {
        process program(words, scratch_.path(), "program");
        const int code = program.wait();
        return {code, program.out(), program.err()};
    }
    outcome run(const strings &arguments) { return run_words(strings{STATIONS} + arguments); }

    void expect_refusal(const strings &arguments, const std::string &expression)
    {
        const outcome refused = run(arguments);
        EXPECT_EQ(1, refused.code);
        EXPECT_TRUE(std::regex_match(refused.err, std::regex("stations: " + expression + "\n"))) << refused.err;
    }

    void expect_verified(const std::string &url, int stations, int confirmed)
    {
        const outcome verified =
            run({url, "--verify", "--stations", std::to_string(stations), "--confirmed", std::to_string(confirmed)});
        EXPECT_EQ(0, verified.code) << verified.err;
        EXPECT_EQ("", verified.err);
    }

    /* Starts a long run on some stations, waits until it has confirmed so many bodies, does something to it, and returns what it
       has said by its end. */
    template <class Interrupt>
    outcome interrupt(const strings &arguments, int confirmed, Interrupt interrupt_run)
    {
        process program = started(arguments + strings{"--rounds", "100000", "--batch", "7", "--budget", "100000"});
        while (confirmed_by(program.out()) < confirmed && !program.has_ended())
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        interrupt_run(program);
        const int code = program.wait();
        return {code, program.out(), program.err()};
    }

    ScratchDirectory scratch_;
};

void kill_program(process &program)
{
    program.end(SIGKILL);
}

/* The line of a run whose server has gone. */
void expect_loss_of_server(const outcome &ended, const std::string &url)
{
    const std::string expected = "stations: " + url +
                                 ": (Server closed the connection|Connection reset by peer|Broken pipe); "
                                 "what was confirmed is safe, " +
                                 std::to_string(confirmed_by(ended.out)) + " bodies of this run\n";
    EXPECT_EQ(1, ended.code);
    EXPECT_TRUE(std::regex_match(ended.err, std::regex(std::regex_replace(expected, std::regex("[+]"), "[+]"))))
        << ended.err;
}

/* ---- stores, each alike ---- */

struct opened_store {
    std::unique_ptr<server> host;
    std::string url;
};

opened_store sqlite_at(const std::filesystem::path &directory)
{
    return {nullptr, "sqlite:" + (directory / "bodies.db").string()};
}

opened_store redis_at(const std::filesystem::path &directory)
{
    auto host = std::make_unique<server>(directory, quick);
    std::string url = host->url();
    return {std::move(host), std::move(url)};
}

struct kind_of_store {
    const char *name;
    opened_store (*at)(const std::filesystem::path &directory);
    strings remove_5; /* the words that take body 5 out */
};

void PrintTo(const kind_of_store &kind, std::ostream *out)
{
    *out << kind.name;
}

class Store : public Stations, public testing::WithParamInterface<kind_of_store> {
protected:
    opened_store opened_ = GetParam().at(scratch_.path());
    const std::string &url_ = opened_.url;
};

INSTANTIATE_TEST_SUITE_P(
    Each, Store,
    testing::Values(kind_of_store{"sqlite", sqlite_at, {"sqlite3", "bodies.db", "DELETE FROM body WHERE number = 5"}},
                    kind_of_store{"redis", redis_at, {"redis-cli", "-s", "socket", "DEL", "station:5"}}),
    [](const auto &each) { return each.param.name; });

using bytes = std::vector<std::byte>;

bytes bytes_of(std::span<const std::byte> record)
{
    return {record.begin(), record.end()};
}

} // namespace

TEST_P(Store, KeepsRecords)
{
    bytes small(1, std::byte{7}), large(1 << 20, std::byte{13});
    {
        const std::unique_ptr<store> bodies = open_store(url_, plain);
        EXPECT_TRUE(bodies->get(1).empty());
        bodies->put(1, small);
        EXPECT_EQ(small, bytes_of(bodies->get(1)));
        bodies->put(1, large);
        bodies->put(UINT32_MAX, small);
        EXPECT_EQ(large, bytes_of(bodies->get(1)));
        bodies->commit();
        bodies->commit();
    }
    const std::unique_ptr<store> bodies = open_store(url_, plain);
    EXPECT_EQ(large, bytes_of(bodies->get(1)));
    EXPECT_EQ(small, bytes_of(bodies->get(UINT32_MAX)));
    EXPECT_TRUE(bodies->get(0).empty());
}

TEST_P(Store, HoldsMoreThanMemory)
{
    const strings sizes = {url_, "--stations", "100", "--budget", "65536"};
    const outcome written = run(sizes + strings{"--rounds", "3", "--batch", "90", "--reads", "3000", "--hits", "90"});
    EXPECT_EQ("", written.err);
    EXPECT_EQ(0, written.code);
    const std::regex said("confirmed 90 of 300 bodies\nconfirmed 180 of 300 bodies\nconfirmed 270 of 300 bodies\n"
                          "confirmed 300 of 300 bodies\n"
                          "read 3000 bodies, (89|90|91)[.][0-9] per cent of them in memory: [0-9]+ a second\n");
    EXPECT_TRUE(std::regex_match(written.out, said)) << written.out;
    EXPECT_EQ("verified 100 bodies\n", run(sizes + strings{"--verify", "--confirmed", "300"}).out);
    expect_refusal(sizes + strings{"--verify", "--confirmed", "301"}, ".*: body 1 is older than was confirmed");
    expect_refusal({url_, "--stations", "101", "--verify", "--confirmed", "101"},
                   ".*: has 100 bodies, and 101 were confirmed");
}

/* A run goes on where the one before ended, with more stations or fewer. */
TEST_P(Store, GrowsWithEachRun)
{
    for (const char *stations : {"10", "30", "20"})
        EXPECT_EQ(0, run({url_, "--stations", stations, "--reads", "0", "--batch", "4"}).code);
    EXPECT_EQ("verified 30 bodies\n", run({url_, "--verify", "--stations", "10", "--confirmed", "30"}).out);
    expect_refusal({url_, "--verify", "--stations", "20", "--confirmed", "60"}, ".*: body 11 is older .*");
}

TEST_P(Store, HoldsTheLastOfSeveralChangesInABatch)
{
    EXPECT_EQ(0, run({url_, "--stations", "2", "--rounds", "4", "--batch", "100", "--reads", "0"}).code);
    expect_verified(url_, 2, 8);
}

TEST_P(Store, Measures)
{
    EXPECT_EQ(0, run({url_, "--stations", "50", "--reads", "0"}).code);
    const outcome measured = run({url_, "--rounds", "0", "--measure", "--reads", "200", "--budget", "65536"});
    std::string expected;
    for (const char *rate : {"50", "90", "99"})
        expected +=
            std::string("hits ") + rate + " per cent: [0-9]+ bodies a second [(][0-9]+ to [0-9]+ in 5 runs[)]\n";
    EXPECT_TRUE(std::regex_match(measured.out, std::regex(expected))) << measured.out << measured.err;
    expect_refusal({url_, "--rounds", "0", "--budget", "500000"},
                   "at this --budget all 50 bodies lie in memory: give fewer bytes, or more --stations");
}

TEST_P(Store, IsVerifiedBodyByBody)
{
    ASSERT_EQ(0, run({url_, "--stations", "12", "--reads", "0"}).code);
    const auto put = [&](std::uint32_t number, const bytes &record) {
        const std::unique_ptr<store> bodies = open_store(url_, plain);
        bodies->put(number, record);
        bodies->commit();
    };
    const bytes good = bytes_of(open_store(url_, plain)->get(5));
    const auto with = [&](std::size_t at) {
        bytes changed = good;
        changed[at] ^= std::byte{1};
        return changed;
    };
    std::vector<reading> others(readings_kept);
    const struct {
        bytes record;
        const char *expected;
    } table[] = {
        {with(8211), "body 5 is damaged: its checksum is wrong"},
        {with(16), "body 5 is damaged: its checksum is wrong"},
        {with(0), "body 5 is none of ours, or was written on a machine of the other byte order"},
        {bytes_of(open_store(url_, plain)->get(6)), "body 5 is damaged: its checksum is wrong"},
        {bytes(good.begin(), good.begin() + 100), "body 5 has 100 bytes, not 8212"},
    };
    for (const auto &row : table) {
        put(5, row.record);
        expect_refusal({url_, "--verify"}, ".*: " + std::string(row.expected));
        expect_refusal({url_, "--stations", "12", "--reads", "0"}, ".*: " + std::string(row.expected));
    }
    {
        const std::unique_ptr<store> bodies = open_store(url_, plain);
        put_body<reading>(*bodies, 5, others);
        bodies->commit();
    }
    expect_refusal({url_, "--verify"}, ".*: body 5 is not what its station measured");
    expect_refusal({url_, "--rounds", "0", "--budget", "65536", "--hits", "100"},
                   ".*: body 5 has a reading that nobody measured");
    EXPECT_EQ(0, run_words(GetParam().remove_5).code);
    expect_refusal({url_, "--verify"}, ".*: body 5 is missing");
    put(5, good);
    expect_verified(url_, 12, 12);
    put(0, good);
    expect_refusal({url_, "--verify"}, ".*: body 0 has 8212 bytes, not 24");
}

TEST_P(Store, KeepsWhatWasConfirmedWhenTheProgramIsKilled)
{
    ASSERT_EQ(0, run({url_, "--stations", "1", "--reads", "0"}).code);
    for (const int confirmed : {0, 1, 100, 250})
        expect_verified(url_, 60, confirmed_by(interrupt({url_, "--stations", "60"}, confirmed, kill_program).out));
}

TEST(Record, ShowsWhereverAByteIsAnother)
{
    class memory : public store {
    public:
        std::span<const std::byte> get(std::uint32_t) override { return record; }
        void put(std::uint32_t, std::span<const std::byte> bytes) override { record = bytes_of(bytes); }
        void commit() override {}
        bytes record;
    } kept;
    std::vector<reading> body(20), taken(20);
    for (std::size_t i = 0; i < body.size(); ++i)
        body[i] = measure(3, static_cast<std::int32_t>(i));
    put_body<reading>(kept, 3, body);
    take_body(kept.get(3), 3, std::span(taken));
    EXPECT_EQ(body, taken);
    EXPECT_THROW(take_body(kept.get(3), 4, std::span(taken)), damage_error);
    for (std::byte &each : kept.record) {
        each ^= std::byte{0x10};
        EXPECT_THROW(take_body(kept.get(3), 3, std::span(taken)), damage_error);
        each ^= std::byte{0x10};
    }
}

/* A store in memory, of which each call may be the one that fails. */
class failing_store : public store {
public:
    std::span<const std::byte> get(std::uint32_t number) override
    {
        count();
        return put_[number];
    }
    void put(std::uint32_t number, std::span<const std::byte> record) override
    {
        count();
        put_[number] = bytes_of(record);
    }
    void commit() override
    {
        count();
        committed_ = put_;
    }
    void fail_after(int calls) { calls_left_ = calls; }
    void forget_uncommitted() { put_ = committed_; }

private:
    void count()
    {
        if (calls_left_-- == 0)
            throw store_error("it fails");
    }

    std::map<std::uint32_t, bytes> put_, committed_;
    int calls_left_ = -1;
};

TEST(StationCache, LosesNothingConfirmedWhicheverCallOfTheStoreFails)
{
    constexpr std::uint32_t stations = 7;
    bool failed = true;
    for (int calls = 0; failed; ++calls) {
        failing_store bodies;
        std::uint32_t confirmed = 0;
        failed = false;
        bodies.fail_after(calls);
        try {
            station_cache cache(bodies, 3 * body_bytes);
            for (std::uint32_t written = 0; written < 4 * stations; ++written) {
                if (written < stations)
                    cache.add();
                else
                    cache.advance(written % stations + 1);
                if (written % 5 == 4) {
                    cache.confirm();
                    confirmed = written + 1;
                }
            }
        } catch (const store_error &) {
            failed = true;
        }
        bodies.fail_after(-1);
        bodies.forget_uncommitted();
        station_cache cache(bodies, 2 * body_bytes);
        ASSERT_LE(std::min(confirmed, stations), cache.size());
        for (std::uint32_t number = 1; number <= cache.size(); ++number) {
            const std::uint32_t times = confirmed / stations + (number <= confirmed % stations ? 1 : 0);
            const std::span<const reading> body = cache.readings(number);
            EXPECT_LE(times, static_cast<std::uint32_t>(body.front().minute) + 1) << calls << " " << number;
            for (std::size_t i = 0; i < readings_kept; ++i)
                ASSERT_EQ(measure(number, body.front().minute + static_cast<std::int32_t>(i)), body[i]);
        }
        ASSERT_LT(calls, 1000);
    }
}

TEST_F(Stations, RefusesABadCommandLine)
{
    const std::string form = " is not the URL of a store: that is sqlite:PATH, redis://HOST\\[:PORT\\]\\[/N\\] or "
                             "redis[+]unix:PATH";
    for (const char *url : {"", "x", "sqlite:", "http://localhost", "redis:", "redis://", "redis://:1", "redis://a:b",
                            "redis://a/b", "redis://a:1/2/3", "redis://[a", "redis+unix:", "rediss://a"})
        expect_refusal({url}, ".*:" + form);
    expect_refusal({"redis://a:65536"}, "redis://a:65536: the number 65536 in this URL is more than 65535");
    expect_refusal({"redis://a/99999999999999999999"}, ".*: the number 99999999999999999999 in this URL is more .*");
    expect_refusal({"--colour"}, "--colour is not understood [(]see stations --help[)]");
    expect_refusal({"--rounds"}, "--rounds needs a value [(]see stations --help[)]");
    expect_refusal({"a", "b"}, "more than one URL [(]see stations --help[)]");
    for (const char *budget : {"16383", "2147483649", "", "1M", "-1"})
        expect_refusal({"--budget", budget},
                       std::string("--budget takes a whole number from 16384 to 2147483648, not ") + budget);
    expect_refusal({"sq\x1b[2J\nlite:"}, "sq\\?\\[2J\\?lite::" + form);
    EXPECT_EQ(0u, run({"--help"}).out.find("usage: stations [URL] [OPTION]...\n"));
}

/* ---- SQLite ---- */

TEST_F(Stations, KeepsBodiesInADatabaseWithoutBeingTold)
{
    EXPECT_EQ(0, run({"--stations", "10", "--reads", "0"}).code);
    EXPECT_TRUE(std::filesystem::exists(scratch_ / "stations.db"));
}

TEST_F(Stations, RefusesADatabaseThatItCannotOpen)
{
    expect_refusal({"sqlite:none/a.db"}, "sqlite:none/a.db: unable to open database file: No such file or directory");
    expect_refusal({"sqlite:/proc/a.db"}, "sqlite:/proc/a.db: unable to open database file: .*");
    expect_refusal({"sqlite:a.db", "--verify"}, "sqlite:a.db: unable to open database file: No such file or directory");
    EXPECT_FALSE(std::filesystem::exists(scratch_ / "a.db"));
    write_whole(scratch_ / "text.db", std::string(5000, 'x'));
    expect_refusal({"sqlite:text.db"}, "sqlite:text.db: file is not a database");
    EXPECT_EQ(std::string(5000, 'x'), read_whole(scratch_ / "text.db"));
    EXPECT_EQ(0, run_words({"sqlite3", "other.db", "CREATE TABLE theirs (a)"}).code);
    expect_refusal({"sqlite:other.db"}, "sqlite:other.db: is a database of another program");
}

TEST_F(Stations, WaitsForAnotherProgramAndSaysSo)
{
    const std::string url = "sqlite:" + (scratch_ / "a.db").string();
    EXPECT_EQ(0, run({url, "--stations", "10", "--reads", "0"}).code);
    const std::unique_ptr<store> other = open_store(url, plain);
    other->put(100, bytes(10));
    expect_refusal({url, "--stations", "10", "--patience", "1"},
                   ".*: database is locked; what was confirmed is safe, 0 bodies of this run");
    expect_verified(url, 10, 10);
}

TEST_F(Stations, StopsWhereTheDatabaseIsFull)
{
    const std::string full = "database or disk is full", error = "disk I/O error";
    const strings program = {STATIONS, "--stations", "300", "--batch", "50"};
    const struct {
        strings words;
        std::string url, expected;
    } table[] = {
        {program, "sqlite:a.db?max=1000000", full},
        {strings{"sh", "-c", "ulimit -f 3000; exec \"$0\" \"$@\""} + program, "sqlite:b.db", error},
    };
    for (const auto &row : table) {
        const outcome stopped = run_words(row.words + strings{row.url});
        const int confirmed = confirmed_by(stopped.out);
        EXPECT_EQ(1, stopped.code);
        EXPECT_EQ("stations: " + row.url + ": " + row.expected + "; what was confirmed is safe, " +
                      std::to_string(confirmed) + " bodies of this run\n",
                  stopped.err);
        EXPECT_LT(0, confirmed);
        expect_verified(row.url, 300, confirmed);
    }
}

/* At its head, at its end, and in the middle. */
TEST_F(Stations, NoticesADamagedDatabase)
{
    EXPECT_EQ(0, run({"sqlite:a.db", "--stations", "100", "--reads", "0"}).code);
    const std::string good = read_whole(scratch_ / "a.db"), noise(20000, '\x5a');
    const struct {
        std::string database, expected;
    } table[] = {
        {good.substr(0, good.size() / 2), "database disk image is malformed"},
        {good.substr(0, 4096 * 3), "database disk image is malformed"},
        {noise + good.substr(noise.size()), "file is not a database"},
        {good.substr(0, 4096) + noise + good.substr(4096 + noise.size()), "database disk image is malformed"},
        {good.substr(0, 500000) + noise + good.substr(500000 + noise.size()),
         "(database disk image is malformed|body [0-9]+ is damaged: its checksum is wrong)"},
    };
    for (const auto &row : table) {
        write_whole(scratch_ / "a.db", row.database);
        expect_refusal({"sqlite:a.db", "--verify"}, "sqlite:a.db: " + row.expected);
    }
}

/* ---- Redis ---- */

TEST_F(Stations, RefusesAServerThatItCannotReach)
{
    expect_refusal({"redis+unix:none"}, "redis[+]unix:none: No such file or directory");
    expect_refusal({"redis://localhost:1"}, "redis://localhost:1: Connection refused");
    expect_refusal({"redis://no.such.host.invalid"}, "redis://no.such.host.invalid: .+");
}

/* Two databases of a server are two stores. */
TEST_F(Stations, ReachesAServerByItsPort)
{
    const int listener = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    ASSERT_EQ(0, bind(listener, reinterpret_cast<sockaddr *>(&address), size));
    ASSERT_EQ(0, getsockname(listener, reinterpret_cast<sockaddr *>(&address), &size));
    const std::string port = std::to_string(ntohs(address.sin_port)), url = "redis://127.0.0.1:" + port;

    /* Nobody accepts: the first connections wait, and the next is not let in. */
    ASSERT_EQ(0, listen(listener, 0));
    std::vector<int> waiting;
    for (int i = 0; i < 3; ++i) {
        waiting.push_back(socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0));
        (void)connect(waiting.back(), reinterpret_cast<sockaddr *>(&address), size);
    }
    expect_refusal({url, "--patience", "1"}, url + ": Connection timed out");
    for (const int each : waiting)
        close(each);
    close(listener);

    const server host(scratch_.path(), {"--port", port, "--bind", "127.0.0.1"});
    EXPECT_EQ(0, run({url + "/3", "--stations", "10", "--reads", "0"}).code);
    expect_verified(url + "/3", 10, 10);
    EXPECT_EQ("verified 0 bodies\n", run({url, "--verify"}).out);
    expect_refusal({url + "/99"}, url + "/99: the server answers: ERR DB index is out of range");
}

TEST_F(Stations, GivesTheServerItsPassword)
{
    const server host(scratch_.path(), quick + strings{"--requirepass", "open sesame"});
    expect_refusal({"redis+unix:socket"}, ".*: the server answers: NOAUTH Authentication required.");
    setenv("REDISCLI_AUTH", "open sesame", 1);
    EXPECT_EQ(0, run({"redis+unix:socket", "--stations", "10", "--reads", "0"}).code);
    setenv("REDISCLI_AUTH", "sesame", 1);
    expect_refusal({"redis+unix:socket"}, ".*: the server answers: WRONGPASS .*");
    unsetenv("REDISCLI_AUTH");
}

TEST_F(Stations, RefusesAServerThatDropsKeys)
{
    const server host(scratch_.path(), quick + strings{"--maxmemory-policy", "allkeys-lru"});
    expect_refusal({"redis+unix:socket"},
                   ".*: the server drops keys when it is full: set its maxmemory-policy to noeviction");
}

TEST_F(Stations, StopsWhereTheServerIsFull)
{
    const server host(scratch_.path(), quick + strings{"--maxmemory", "5mb"});
    const outcome stopped = run({"redis+unix:socket", "--stations", "1000", "--batch", "50"});
    const int confirmed = confirmed_by(stopped.out);
    EXPECT_EQ(1, stopped.code);
    EXPECT_EQ(
        "stations: redis+unix:socket: the server answers: OOM command not allowed when used memory > 'maxmemory'.; "
        "what was confirmed is safe, " +
            std::to_string(confirmed) + " bodies of this run\n",
        stopped.err);
    EXPECT_LT(0, confirmed);
    expect_verified("redis+unix:socket", 1000, confirmed);
}

TEST_F(Stations, RefusesWhatIsNoBody)
{
    const server host(scratch_.path(), quick);
    EXPECT_EQ(0, run({"redis+unix:socket", "--stations", "10", "--reads", "0"}).code);
    EXPECT_EQ(0, run_words({"redis-cli", "-s", "socket", "DEL", "station:5"}).code);
    EXPECT_EQ(0, run_words({"redis-cli", "-s", "socket", "LPUSH", "station:5", "a"}).code);
    expect_refusal({"redis+unix:socket", "--verify"}, ".*: the server answers: WRONGTYPE .*");
}

TEST_F(Stations, DoesNotWaitForAServerForEver)
{
    const server host(scratch_.path(), quick);
    const outcome ended =
        interrupt({host.url(), "--stations", "60", "--patience", "1"}, 1, [&](process &) { host.signal(SIGSTOP); });
    host.signal(SIGCONT);
    EXPECT_EQ("stations: " + host.url() + ": the server did not answer within 1 s; what was confirmed is safe, " +
                  std::to_string(confirmed_by(ended.out)) + " bodies of this run\n",
              ended.err);
    expect_verified(host.url(), 60, confirmed_by(ended.out));
}

/* A server that is killed, or told to end, in the middle of a run; and again, once it is back. */
TEST_F(Stations, LosesNothingConfirmedWithTheServer)
{
    server host(scratch_.path(), lasting);
    for (const int number : {SIGKILL, SIGTERM, SIGKILL}) {
        const outcome ended = interrupt({host.url(), "--stations", "30"}, 50, [&](process &) { host.end(number); });
        const int confirmed = confirmed_by(ended.out);
        expect_loss_of_server(ended, host.url());
        EXPECT_LE(50, confirmed);
        expect_refusal({host.url(), "--verify"}, ".*: (Connection refused|No such file or directory)");
        host.start();
        expect_verified(host.url(), 30, confirmed);
    }
}

/* What one machine confirmed, another reads while the first goes on. */
TEST_F(Stations, SharesTheServer)
{
    const server host(scratch_.path(), quick);
    interrupt({host.url(), "--stations", "40"}, 40, [&](process &writer) {
        for (int i = 0; i < 3; ++i) {
            process other({STATIONS, host.url(), "--verify", "--stations", "40", "--confirmed", "40"}, scratch_.path(),
                          "other");
            EXPECT_EQ(0, other.wait()) << other.err();
        }
        EXPECT_FALSE(writer.has_ended());
        writer.end(SIGKILL);
    });
}
