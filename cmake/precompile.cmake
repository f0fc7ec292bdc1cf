# The headers of other people that most sources include. Our own stay out, so that a change of one rebuilds what uses it.
set(tessel_precompiled <algorithm> <functional> <map> <memory> <optional> <set> <string> <string_view> <vector>
                       <boost/describe.hpp> <boost/mp11.hpp> <boost/unordered/unordered_flat_map.hpp>
                       <boost/unordered/unordered_flat_set.hpp> <fmt/format.h>)

# Precompiles them for a target, with more headers if any are named.
function(tessel_precompile target)
  if(TESSEL_PCH)
    target_precompile_headers(${target} PRIVATE ${tessel_precompiled} ${ARGN})
  endif()
endfunction()
