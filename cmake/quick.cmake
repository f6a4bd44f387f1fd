# PURLOCK_QUICK: less time to compile, since most of it goes into headers that files share. It hides what a file forgets to
# include; builds without it show that.

# One unit of all files of a target. So what they keep to themselves needs different names.
function(purlock_compile_as_one target)
  if(PURLOCK_QUICK)
    set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 0)
  endif()
endfunction()

# For targets whose files keep the same names to themselves, such as tables of tests.
function(purlock_precompile_headers target)
  if(PURLOCK_QUICK)
    target_precompile_headers(${target} PRIVATE
      <algorithm> <array> <chrono> <cstdint> <functional> <map> <memory> <mutex> <optional> <string> <string_view>
      <utility> <variant> <vector> <gtest/gtest.h>)
  endif()
endfunction()
