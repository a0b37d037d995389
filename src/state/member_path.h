// Members of records as template arguments, for tables that name a member once and reach it in both directions.
#ifndef VQ3900_STATE_MEMBER_PATH_H
#define VQ3900_STATE_MEMBER_PATH_H

#include <type_traits>

namespace vq3900 {

template <auto... Path>
struct RecordOfPath;

template <typename Record, typename Member, Member Record::*First, auto... Rest>
struct RecordOfPath<First, Rest...> {
  using type = Record;
};

template <auto... Path>
using RecordOf = typename RecordOfPath<Path...>::type;

// Follows a path of members and array indices: walk<&State::params, &Params::chop, 2>(state) is state.params.chop[2].
template <auto First, auto... Rest>
constexpr auto& walk(auto& object) {
  if constexpr (std::is_member_object_pointer_v<decltype(First)>) {
    if constexpr (sizeof...(Rest) == 0) {
      return object.*First;
    } else {
      return walk<Rest...>(object.*First);
    }
  } else {
    if constexpr (sizeof...(Rest) == 0) {
      return object[First];
    } else {
      return walk<Rest...>(object[First]);
    }
  }
}

}  // namespace vq3900

#endif
