// vq3900-tool as a function, so that tests run it inside their own process.
#ifndef VQ3900_TOOLS_TOOL_H
#define VQ3900_TOOLS_TOOL_H

namespace vq3900::tool {

inline constexpr int kDone = 0;
inline constexpr int kFailed = 1;    // the job failed, or a check found errors
inline constexpr int kBadUsage = 2;  // the command line is wrong

int run_tool(int argc, const char* const* argv);

}  // namespace vq3900::tool

#endif
