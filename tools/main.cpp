#include "tool.h"

int main(int argc, char** argv) {
  return vq3900::tool::run_tool(argc, argv);
}
