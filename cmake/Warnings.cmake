# tavril_warnings_are_errors(<variable>): whether TAVRIL_WERROR says so of this system. Other compilers and libraries than
# those that the sources were written with warn of more, and that must not keep anybody from building.
function(tavril_warnings_are_errors variable)
  set(answer ${TAVRIL_WERROR})
  if(TAVRIL_WERROR MATCHES "^[a-z]+-")
    cmake_host_system_information(RESULT system QUERY DISTRIB_INFO)
    string(COMPARE EQUAL "${TAVRIL_WERROR}" "${system_ID}-${system_VERSION_ID}" answer)
  endif()
  set(${variable} ${answer} PARENT_SCOPE)
endfunction()
