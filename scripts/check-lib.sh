# Shared by the install and package checks (sourced): counted checks and a
# display number of their own.
passed=0
failures=0
# Other users of the machine start their displays at 99.
display=$((100 + RANDOM % 400))
check() { # check DESCRIPTION COMMAND...
  local what=$1
  shift
  if "$@"; then echo "ok: $what"; passed=$((passed + 1)); else echo "FAILED: $what" >&2; failures=$((failures + 1)); fi
}
equals() { [ "$1" = "$2" ] || { echo "  got \"$1\", expected \"$2\"" >&2; false; }; }
