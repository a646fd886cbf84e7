# Shell helpers for the example tests (sourced by sh; see CMakeLists.txt).
# BIN is the directory of the example programs, DATA the test data folder,
# SAMPLE the captured HTTP response folder.

# fails PATTERN COMMAND...: COMMAND must exit with status 1 and write exactly
# one line to standard error, matching the extended regular expression PATTERN.
fails() {
  pattern=$1
  shift
  status=0
  "$@" 2>stderr.txt || status=$?
  if [ "$status" -ne 1 ] || [ "$(wc -l <stderr.txt)" -ne 1 ] || ! grep -Eq "$pattern" stderr.txt; then
    echo "FAILED: $*: status $status (want 1), want one line matching '$pattern', got:" >&2
    cat stderr.txt >&2
    return 1
  fi
}

# same FILE1 FILE2: the two files hold the same bytes.
same() {
  cmp "$1" "$2" || { echo "FAILED: $1 and $2 differ" >&2; return 1; }
}

# set_byte FILE OFFSET BYTE: overwrites the byte at OFFSET (octal escape BYTE, as
# printf takes it, e.g. '\006').
set_byte() {
  printf "$3" | dd of="$1" bs=1 seek="$2" conv=notrunc status=none
}
