#include "support/child.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <vector>

namespace vq3900::bench {

namespace {

std::string read_all(int from) {
  std::string text;
  std::array<char, 256> bytes;
  for (ssize_t count = 0; (count = read(from, bytes.data(), bytes.size())) > 0;)
    text.append(bytes.data(), static_cast<std::size_t>(count));
  return text;
}

double seconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
}

}  // namespace

Run run_program(std::initializer_list<const char*> arguments) {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) return {};
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
  std::vector<char*> argv;
  for (const char* const argument : arguments)
    argv.push_back(const_cast<char*>(argument));
  argv.push_back(nullptr);
  pid_t child = 0;
  const bool started = posix_spawn(&child, argv[0], &actions, nullptr, argv.data(), environ) == 0;
  posix_spawn_file_actions_destroy(&actions);
  close(ends[1]);
  Run run{read_all(ends[0])};
  close(ends[0]);
  int status = 1;
  rusage used{};
  if (started) wait4(child, &status, 0, &used);
  if (status != 0) run.output.clear();
  run.seconds = seconds(used.ru_utime) + seconds(used.ru_stime);
  return run;
}

}  // namespace vq3900::bench
