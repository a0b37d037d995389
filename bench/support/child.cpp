#include "support/child.h"

#include <fcntl.h>
#include <spawn.h>
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

}  // namespace

std::string output_of(std::initializer_list<const char*> arguments) {
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
  std::string text = read_all(ends[0]);
  close(ends[0]);
  int status = 1;
  if (started) waitpid(child, &status, 0);
  return status == 0 ? text : std::string{};
}

}  // namespace vq3900::bench
