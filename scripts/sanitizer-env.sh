# Sourced by the scripts that run sanitized programs: stop at the first fault
# with a stack, and take libclamav's known leak from the one suppression file.
# fast_unwind_on_malloc=0: libcrypto has no frame pointers, so the fast unwinder
# stops inside it and a leak's stack would not show the libclamav call that the
# suppression names; the full unwinder costs the suite about twice the time.
_vmk_root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
export ASAN_OPTIONS="halt_on_error=1:print_stacktrace=1:detect_leaks=1:check_initialization_order=1:fast_unwind_on_malloc=0"
export UBSAN_OPTIONS="halt_on_error=1:print_stacktrace=1"
export LSAN_OPTIONS="suppressions=${_vmk_root}/scripts/lsan-suppressions.txt:print_suppressions=0"
