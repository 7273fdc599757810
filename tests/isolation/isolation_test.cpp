// No model allocates memory or calls the system. (That none takes a lock shows in what the library imports.)

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <vector>

#include <doctest/doctest.h>

#include "tests/support/call.h"
#include "tests/support/random_call.h"

using namespace curvebank;
using test::CallState;

namespace {

long allocations = 0;

struct Row {
    const ModelCatalogEntry *entry;
    ModelFunc model;
};

std::vector<Row> all_models()
{
    std::vector<Row> rows;
    for (const auto &row : catalogue) rows.push_back({&row, test::model(row.name)});
    return rows;
}

/// From here on the process is ended by a signal at any system call but its exit.
bool forbid_system_calls()
{
    sock_filter rules[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_exit_group, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_KILL_PROCESS),
    };
    const sock_fprog program = {std::size(rules), rules};
    return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 && prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

/// The signal that ended a child which did this without system calls; 0 if it came to its end.
template <class Work>
int signal_without_system_calls(const Work &work)
{
    const pid_t child = fork();
    REQUIRE(child >= 0);
    if (child == 0) {
        if (!forbid_system_calls()) _exit(1);
        work();
        _exit(0);
    }
    int status = 0;
    REQUIRE(waitpid(child, &status, 0) == child);
    REQUIRE((WIFSIGNALED(status) || WEXITSTATUS(status) == 0));
    return WIFSIGNALED(status) ? WTERMSIG(status) : 0;
}

}  // namespace

// The allocator of the whole program, counted.
extern "C" {
void *__libc_malloc(size_t);
void *__libc_calloc(size_t, size_t);
void *__libc_realloc(void *, size_t);
void *__libc_memalign(size_t, size_t);

void *malloc(size_t size)
{
    ++allocations;
    return __libc_malloc(size);
}

void *calloc(size_t count, size_t size)
{
    ++allocations;
    return __libc_calloc(count, size);
}

void *realloc(void *old, size_t size)
{
    ++allocations;
    return __libc_realloc(old, size);
}

void *aligned_alloc(size_t alignment, size_t size)
{
    ++allocations;
    return __libc_memalign(alignment, size);
}
}

TEST_CASE("no model allocates memory")
{
    const long before_control = allocations;
    std::free(std::malloc(1 + static_cast<size_t>(before_control % 2)));
    REQUIRE(allocations > before_control);

    test::Random random(20260105);
    for (const Row &row : all_models()) {
        long taken = 0;
        for (int i = 0; i < 1000; ++i) {
            CallState call = random.call(*row.entry);
            const long before = allocations;
            call.run(row.model);
            taken += allocations - before;
        }
        INFO(row.entry->name);
        CHECK(taken == 0);
    }
}

TEST_CASE("no model calls the system")
{
    REQUIRE(signal_without_system_calls([] { getppid(); }) == SIGSYS);

    // Shared with the child, which cannot say any more where it was.
    auto *const current = static_cast<volatile size_t *>(
        mmap(nullptr, sizeof(size_t), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    REQUIRE((current != MAP_FAILED));
    const std::vector<Row> rows = all_models();
    test::Random random(20260106);
    const int signal = signal_without_system_calls([&] {
        for (size_t i = 0; i < rows.size(); ++i) {
            *current = i;
            for (int k = 0; k < 1000; ++k) random.call(*rows[i].entry).run(rows[i].model);
        }
    });
    INFO("last in " << rows[*current].entry->name);
    CHECK(signal == 0);
}
