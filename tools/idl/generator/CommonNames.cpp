// SPDX-License-Identifier: Apache-2.0
#include "CommonNames.hpp"

#include <sstream>
#include <string>
#include <unordered_set>

namespace ovra::plex::idl
{

namespace
{

/// Those that the headers of the C library and of Fast DDS bring along on Linux.
constexpr const char* macros = R"(
AF_INET AF_INET6 AF_UNIX ATOMIC_BOOL_LOCK_FREE ATOMIC_CHAR16_T_LOCK_FREE ATOMIC_CHAR32_T_LOCK_FREE
ATOMIC_CHAR8_T_LOCK_FREE ATOMIC_CHAR_LOCK_FREE ATOMIC_FLAG_INIT ATOMIC_INT_LOCK_FREE ATOMIC_LLONG_LOCK_FREE
ATOMIC_LONG_LOCK_FREE ATOMIC_POINTER_LOCK_FREE ATOMIC_SHORT_LOCK_FREE ATOMIC_VAR_INIT ATOMIC_WCHAR_T_LOCK_FREE
BIG_ENDIAN BIT BIT0 BIT1 BIT2 BIT3 BIT4 BIT5 BIT6 BIT7 BOOL_MAX BOOL_WIDTH BUFSIZ BUILTIN_DATA_MAX_SIZE BYTE_ORDER
CDR_BE CDR_LE CHARCLASS_NAME_MAX CHAR_BIT CHAR_MAX CHAR_MIN CHAR_WIDTH CLOCKS_PER_SEC CLOCK_BOOTTIME
CLOCK_BOOTTIME_ALARM CLOCK_MONOTONIC CLOCK_MONOTONIC_COARSE CLOCK_MONOTONIC_RAW CLOCK_PROCESS_CPUTIME_ID
CLOCK_REALTIME CLOCK_REALTIME_ALARM CLOCK_REALTIME_COARSE CLOCK_TAI CLOCK_THREAD_CPUTIME_ID CPU_ALLOC CPU_ALLOC_SIZE
CPU_AND CPU_AND_S CPU_CLR CPU_CLR_S CPU_COUNT CPU_COUNT_S CPU_EQUAL CPU_EQUAL_S CPU_FREE CPU_ISSET CPU_ISSET_S
CPU_OR CPU_OR_S CPU_SET CPU_SETSIZE CPU_SET_S CPU_XOR CPU_XOR_S CPU_ZERO CPU_ZERO_S CSIGNAL DBL_EPSILON DBL_MAX
DBL_MIN DEFAULT_ENCAPSULATION DELAYTIMER_MAX E2BIG EACCES EADDRINUSE EADDRNOTAVAIL EADV EAFNOSUPPORT EAGAIN EALREADY
EBADE EBADF EBADFD EBADMSG EBADR EBADRQC EBADSLT EBFONT EBUSY ECANCELED ECHILD ECHRNG ECOMM ECONNABORTED
ECONNREFUSED ECONNRESET EDEADLK EDEADLOCK EDESTADDRREQ EDOM EDOTDOT EDQUOT EEXIST EFAULT EFBIG EHOSTDOWN
EHOSTUNREACH EHWPOISON EIDRM EILSEQ EINPROGRESS EINTR EINVAL EIO EISCONN EISDIR EISNAM EKEYEXPIRED EKEYREJECTED
EKEYREVOKED EL2HLT EL2NSYNC EL3HLT EL3RST ELIBACC ELIBBAD ELIBEXEC ELIBMAX ELIBSCN ELNRNG ELOOP EMEDIUMTYPE EMFILE
EMLINK EMSGSIZE EMULTIHOP ENAMETOOLONG ENAVAIL ENETDOWN ENETRESET ENETUNREACH ENFILE ENOANO ENOBUFS ENOCSI ENODATA
ENODEV ENOENT ENOEXEC ENOKEY ENOLCK ENOLINK ENOMEDIUM ENOMEM ENOMSG ENONET ENOPKG ENOPROTOOPT ENOSPC ENOSR ENOSTR
ENOSYS ENOTBLK ENOTCONN ENOTDIR ENOTEMPTY ENOTNAM ENOTRECOVERABLE ENOTSOCK ENOTSUP ENOTTY ENOTUNIQ ENXIO EOPNOTSUPP
EOVERFLOW EOWNERDEAD EPERM EPFNOSUPPORT EPIPE EPROTO EPROTONOSUPPORT EPROTOTYPE ERANGE EREMCHG EREMOTE EREMOTEIO
ERESTART ERFKILL EROFS ESHUTDOWN ESOCKTNOSUPPORT ESPIPE ESRCH ESRMNT ESTALE ESTRPIPE ETIME ETIMEDOUT ETOOMANYREFS
ETXTBSY EUCLEAN EUNATCH EUSERS EWOULDBLOCK EXDEV EXFULL EXIT_FAILURE EXIT_SUCCESS FD_CLR FD_ISSET FD_SET FD_SETSIZE
FD_ZERO FILENAME_MAX FLT_EPSILON FLT_MAX FLT_MIN FOPEN_MAX F_LOCK F_OK F_TEST F_TLOCK F_ULOCK HOST_NAME_MAX HUGE_VAL
HUGE_VALF HUGE_VALL INADDR_ANY INFINITY INT16_C INT16_MAX INT16_MIN INT16_WIDTH INT32_C INT32_MAX INT32_MIN
INT32_WIDTH INT64_C INT64_MAX INT64_MIN INT64_WIDTH INT8_C INT8_MAX INT8_MIN INT8_WIDTH INTMAX_C INTMAX_MAX
INTMAX_MIN INTMAX_WIDTH INTPTR_MAX INTPTR_MIN INTPTR_WIDTH INT_MAX INT_MIN INT_WIDTH IOV_MAX ITIMER_PROF ITIMER_REAL
ITIMER_VIRTUAL LC_ADDRESS LC_ADDRESS_MASK LC_ALL LC_ALL_MASK LC_COLLATE LC_COLLATE_MASK LC_CTYPE LC_CTYPE_MASK
LC_GLOBAL_LOCALE LC_IDENTIFICATION LC_IDENTIFICATION_MASK LC_MEASUREMENT LC_MEASUREMENT_MASK LC_MESSAGES
LC_MESSAGES_MASK LC_MONETARY LC_MONETARY_MASK LC_NAME LC_NAME_MASK LC_NUMERIC LC_NUMERIC_MASK LC_PAPER LC_PAPER_MASK
LC_TELEPHONE LC_TELEPHONE_MASK LC_TIME LC_TIME_MASK LINE_MAX LITTLE_ENDIAN LLONG_MAX LLONG_MIN LLONG_WIDTH
LOGIN_NAME_MAX LONG_BIT LONG_LONG_MAX LONG_LONG_MIN LONG_MAX LONG_MIN LONG_WIDTH MATH_ERREXCEPT MATH_ERRNO MAXFLOAT
MAX_CANON MAX_INPUT MB_CUR_MAX MB_LEN_MAX MQ_PRIO_MAX M_1_PI M_2_PI M_2_SQRTPI M_CHECK_ACTION M_E M_LN10 M_LN2
M_LOG10E M_LOG2E M_PI M_PI_2 M_PI_4 M_SQRT1_2 M_SQRT2 NAME_MAX NAN NFDBITS NGROUPS_MAX NITEMS NZERO O_APPEND O_CREAT
O_RDONLY O_RDWR O_TRUNC O_WRONLY PATH_MAX PDP_ENDIAN PIPE_BUF PTRDIFF_MAX PTRDIFF_MIN PTRDIFF_WIDTH RAND_MAX
RENAME_EXCHANGE RENAME_NOREPLACE RENAME_WHITEOUT RTSIG_MAX R_OK SCHAR_MAX SCHAR_MIN SCHAR_WIDTH SCHED_BATCH
SCHED_DEADLINE SCHED_EXT SCHED_FIFO SCHED_IDLE SCHED_ISO SCHED_NORMAL SCHED_OTHER SCHED_RESET_ON_FORK SCHED_RR
SEEK_CUR SEEK_DATA SEEK_END SEEK_HOLE SEEK_SET SEM_FAILED SEM_VALUE_MAX SHRT_MAX SHRT_MIN SHRT_WIDTH SIGABRT SIGALRM
SIGFPE SIGHUP SIGILL SIGINT SIGKILL SIGPIPE SIGQUIT SIGSEGV SIGTERM SIGUSR1 SIGUSR2 SIG_ATOMIC_MAX SIG_ATOMIC_MIN
SIG_ATOMIC_WIDTH SIG_DFL SIG_ERR SIG_IGN SIZE_MAX SIZE_WIDTH SOCK_DGRAM SOCK_STREAM SO_REUSEADDR SSIZE_MAX
TEMP_FAILURE_RETRY TIMER_ABSTIME TIMESPEC_TO_TIMEVAL TIMEVAL_TO_TIMESPEC TIME_T_INFINITE_NANOSECONDS
TIME_T_INFINITE_SECONDS TIME_UTC TMP_MAX TTY_NAME_MAX UCHAR_MAX UCHAR_WIDTH UINT16_C UINT16_MAX UINT16_WIDTH
UINT32_C UINT32_MAX UINT32_WIDTH UINT64_C UINT64_MAX UINT64_WIDTH UINT8_C UINT8_MAX UINT8_WIDTH UINTMAX_C
UINTMAX_MAX UINTMAX_WIDTH UINTPTR_MAX UINTPTR_WIDTH UINT_MAX UINT_WIDTH ULLONG_MAX ULLONG_WIDTH ULONG_LONG_MAX
ULONG_MAX ULONG_WIDTH USHRT_MAX USHRT_WIDTH WCHAR_MAX WCHAR_MIN WCHAR_WIDTH WCONTINUED WEOF WEXITED WEXITSTATUS
WIFCONTINUED WIFEXITED WIFSIGNALED WIFSTOPPED WINT_MAX WINT_MIN WINT_WIDTH WNOHANG WNOWAIT WORD_BIT WSTOPPED
WSTOPSIG WTERMSIG WUNTRACED W_OK X_OK alloca assert_perror be16toh be32toh be64toh htobe16 htobe32 htobe64 htole16
htole32 htole64 issubnormal le16toh le32toh le64toh logError logInfo logWarning math_errhandling offsetof sa_handler
sched_priority si_value st_atime st_ctime st_mtime strdupa strndupa timeradd timerclear timercmp timerisset timersub
)";

/// Functions, types and variables that they declare, keywords and names with an underscore apart.
constexpr const char* globals = R"(
a64l abort abs accept access acct acos acosf acosf128 acosf32 acosf32x acosf64 acosf64x acosh acoshf acoshf128
acoshf32 acoshf32x acoshf64 acoshf64x acoshl acosl acospi acospif acospif128 acospif32 acospif32x acospif64
acospif64x acospil adjtime alarm alloca arc4random asctime asin asinf asinf128 asinf32 asinf32x asinf64 asinf64x
asinh asinhf asinhf128 asinhf32 asinhf32x asinhf64 asinhf64x asinhl asinl asinpi asinpif asinpif128 asinpif32
asinpif32x asinpif64 asinpif64x asinpil asprintf atan atan2 atan2f atan2f128 atan2f32 atan2f32x atan2f64 atan2f64x
atan2l atan2pi atan2pif atan2pif128 atan2pif32 atan2pif32x atan2pif64 atan2pif64x atan2pil atanf atanf128 atanf32
atanf32x atanf64 atanf64x atanh atanhf atanhf128 atanhf32 atanhf32x atanhf64 atanhf64x atanhl atanl atanpi atanpif
atanpif128 atanpif32 atanpif32x atanpif64 atanpif64x atanpil atexit atof atoi atol atoll basename bcmp bcopy bind
bindtextdomain brk bsearch btowc bzero calloc canonicalize canonicalizef canonicalizef128 canonicalizef32
canonicalizef32x canonicalizef64 canonicalizef64x canonicalizel cbrt cbrtf cbrtf128 cbrtf32 cbrtf32x cbrtf64
cbrtf64x cbrtl ceil ceilf ceilf128 ceilf32 ceilf32x ceilf64 ceilf64x ceill chdir chmod chown chroot clearenv
clearerr clock clone close closefrom confstr connect copysign copysignf copysignf128 copysignf32 copysignf32x
copysignf64 copysignf64x copysignl cos cosf cosf128 cosf32 cosf32x cosf64 cosf64x cosh coshf coshf128 coshf32
coshf32x coshf64 coshf64x coshl cosl cospi cospif cospif128 cospif32 cospif32x cospif64 cospif64x cospil creat crypt
ctermid ctime cuserid daddl daemon daylight dcgettext dcngettext ddivl dfmal dgettext difftime dirname div dmull
dngettext dprintf drand48 drem dremf dreml dsqrtl dsubl dup dup2 dup3 duplocale dysize eaccess ecvt endusershell
environ erand48 erf erfc erfcf erfcf128 erfcf32 erfcf32x erfcf64 erfcf64x erfcl erff erff128 erff32 erff32x erff64
erff64x erfl euidaccess execl execle execlp execv execve execveat execvp execvpe exit exp exp10 exp10f exp10f128
exp10f32 exp10f32x exp10f64 exp10f64x exp10l exp10m1 exp10m1f exp10m1f128 exp10m1f32 exp10m1f32x exp10m1f64
exp10m1f64x exp10m1l exp2 exp2f exp2f128 exp2f32 exp2f32x exp2f64 exp2f64x exp2l exp2m1 exp2m1f exp2m1f128 exp2m1f32
exp2m1f32x exp2m1f64 exp2m1f64x exp2m1l expf expf128 expf32 expf32x expf64 expf64x expl expm1 expm1f expm1f128
expm1f32 expm1f32x expm1f64 expm1f64x expm1l f32addf128 f32addf32x f32addf64 f32addf64x f32divf128 f32divf32x
f32divf64 f32divf64x f32fmaf128 f32fmaf32x f32fmaf64 f32fmaf64x f32mulf128 f32mulf32x f32mulf64 f32mulf64x
f32sqrtf128 f32sqrtf32x f32sqrtf64 f32sqrtf64x f32subf128 f32subf32x f32subf64 f32subf64x f32xaddf128 f32xaddf64
f32xaddf64x f32xdivf128 f32xdivf64 f32xdivf64x f32xfmaf128 f32xfmaf64 f32xfmaf64x f32xmulf128 f32xmulf64 f32xmulf64x
f32xsqrtf128 f32xsqrtf64 f32xsqrtf64x f32xsubf128 f32xsubf64 f32xsubf64x f64addf128 f64addf64x f64divf128 f64divf64x
f64fmaf128 f64fmaf64x f64mulf128 f64mulf64x f64sqrtf128 f64sqrtf64x f64subf128 f64subf64x f64xaddf128 f64xdivf128
f64xfmaf128 f64xmulf128 f64xsqrtf128 f64xsubf128 fabs fabsf fabsf128 fabsf32 fabsf32x fabsf64 fabsf64x fabsl
faccessat fadd faddl fchdir fchown fchownat fclose fcloseall fcvt fdatasync fdim fdimf fdimf128 fdimf32 fdimf32x
fdimf64 fdimf64x fdiml fdiv fdivl fdopen feof ferror fexecve fflush ffma ffmal ffs ffsl ffsll fgetc fgetpos
fgetpos64 fgets fgetwc fgetws fileno finite finitef finitel flockfile floor floorf floorf128 floorf32 floorf32x
floorf64 floorf64x floorl fma fmaf fmaf128 fmaf32 fmaf32x fmaf64 fmaf64x fmal fmax fmaxf fmaxf128 fmaxf32 fmaxf32x
fmaxf64 fmaxf64x fmaximum fmaximumf fmaximumf128 fmaximumf32 fmaximumf32x fmaximumf64 fmaximumf64x fmaximuml fmaxl
fmaxmag fmaxmagf fmaxmagf128 fmaxmagf32 fmaxmagf32x fmaxmagf64 fmaxmagf64x fmaxmagl fmemopen fmin fminf fminf128
fminf32 fminf32x fminf64 fminf64x fminimum fminimumf fminimumf128 fminimumf32 fminimumf32x fminimumf64 fminimumf64x
fminimuml fminl fminmag fminmagf fminmagf128 fminmagf32 fminmagf32x fminmagf64 fminmagf64x fminmagl fmod fmodf
fmodf128 fmodf32 fmodf32x fmodf64 fmodf64x fmodl fmul fmull fopen fopen64 fopencookie fork fpathconf fprintf fputc
fputs fputwc fputws fread free freelocale freopen freopen64 frexp frexpf frexpf128 frexpf32 frexpf32x frexpf64
frexpf64x frexpl fromfp fromfpf fromfpf128 fromfpf32 fromfpf32x fromfpf64 fromfpf64x fromfpl fromfpx fromfpxf
fromfpxf128 fromfpxf32 fromfpxf32x fromfpxf64 fromfpxf64x fromfpxl fscanf fseek fseeko fseeko64 fsetpos fsetpos64
fsqrt fsqrtl fstat fsub fsubl fsync ftell ftello ftello64 ftruncate ftruncate64 ftrylockfile funlockfile futimes
futimesat fwide fwprintf fwrite fwscanf gamma gammaf gammal gcvt getc getchar getcpu getcwd getdate getdelim
getdomainname getdtablesize getegid getentropy getenv geteuid getgid getgroups gethostid gethostname getitimer
getline getloadavg getlogin getopt getpagesize getpass getpayload getpayloadf getpayloadf128 getpayloadf32
getpayloadf32x getpayloadf64 getpayloadf64x getpayloadl getpgid getpgrp getpid getppid getpt getresgid getresuid
getsid getsubopt gettext gettid gettimeofday getuid getusershell getw getwc getwchar getwd gmtime grantpt hypot
hypotf hypotf128 hypotf32 hypotf32x hypotf64 hypotf64x hypotl ilogb ilogbf ilogbf128 ilogbf32 ilogbf32x ilogbf64
ilogbf64x ilogbl index initstate ioctl isalnum isalpha isascii isatty isblank iscanonical iscntrl isctype isdigit
iseqsig isgraph isinff isinfl islower isnanf isnanl isprint ispunct issignaling isspace isupper iswalnum iswalpha
iswblank iswcntrl iswctype iswdigit iswgraph iswlower iswprint iswpunct iswspace iswupper iswxdigit isxdigit iszero
itimerspec itimerval j0 j0f j0f128 j0f32 j0f32x j0f64 j0f64x j0l j1 j1f j1f128 j1f32 j1f32x j1f64 j1f64x j1l jn jnf
jnf128 jnf32 jnf32x jnf64 jnf64x jnl jrand48 kill l64a labs lchown lcong48 lconv ldexp ldexpf ldexpf128 ldexpf32
ldexpf32x ldexpf64 ldexpf64x ldexpl ldiv lgamma lgammaf lgammaf128 lgammaf32 lgammaf32x lgammaf64 lgammaf64x lgammal
link linkat listen llabs lldiv llogb llogbf llogbf128 llogbf32 llogbf32x llogbf64 llogbf64x llogbl llrint llrintf
llrintf128 llrintf32 llrintf32x llrintf64 llrintf64x llrintl llround llroundf llroundf128 llroundf32 llroundf32x
llroundf64 llroundf64x llroundl localeconv localtime lockf lockf64 log log10 log10f log10f128 log10f32 log10f32x
log10f64 log10f64x log10l log10p1 log10p1f log10p1f128 log10p1f32 log10p1f32x log10p1f64 log10p1f64x log10p1l log1p
log1pf log1pf128 log1pf32 log1pf32x log1pf64 log1pf64x log1pl log2 log2f log2f128 log2f32 log2f32x log2f64 log2f64x
log2l log2p1 log2p1f log2p1f128 log2p1f32 log2p1f32x log2p1f64 log2p1f64x log2p1l logb logbf logbf128 logbf32
logbf32x logbf64 logbf64x logbl logf logf128 logf32 logf32x logf64 logf64x logl logp1 logp1f logp1f128 logp1f32
logp1f32x logp1f64 logp1f64x logp1l lrand48 lrint lrintf lrintf128 lrintf32 lrintf32x lrintf64 lrintf64x lrintl
lround lroundf lroundf128 lroundf32 lroundf32x lroundf64 lroundf64x lroundl lseek lseek64 lstat lutimes mallinfo
mallinfo2 malloc mallopt mblen mbrlen mbrtowc mbsinit mbsnrtowcs mbsrtowcs mbstowcs mbtowc memalign memccpy memchr
memcmp memcpy memfrob memmem memmove mempcpy memrchr memset mkdir mkdtemp mkostemp mkostemp64 mkostemps mkostemps64
mkstemp mkstemp64 mkstemps mkstemps64 mktemp mktime mmap modf modff modff128 modff32 modff32x modff64 modff64x modfl
mrand48 nan nanf nanf128 nanf32 nanf32x nanf64 nanf64x nanl nanosleep nearbyint nearbyintf nearbyintf128
nearbyintf32 nearbyintf32x nearbyintf64 nearbyintf64x nearbyintl newlocale nextafter nextafterf nextafterf128
nextafterf32 nextafterf32x nextafterf64 nextafterf64x nextafterl nextdown nextdownf nextdownf128 nextdownf32
nextdownf32x nextdownf64 nextdownf64x nextdownl nexttoward nexttowardf nexttowardl nextup nextupf nextupf128
nextupf32 nextupf32x nextupf64 nextupf64x nextupl ngettext nice nrand48 obstack open optarg opterr optind optopt
pathconf pause pclose perror pipe pipe2 poll popen pow powf powf128 powf32 powf32x powf64 powf64x powl pread pread64
printf profil pselect ptsname putc putchar putenv puts putw putwc putwchar pvalloc pwrite pwrite64 qecvt qfcvt qgcvt
qsort raise rand random rawmemchr read readlink readlinkat realloc reallocarray realpath recv recvfrom remainder
remainderf remainderf128 remainderf32 remainderf32x remainderf64 remainderf64x remainderl remove remquo remquof
remquof128 remquof32 remquof32x remquof64 remquof64x remquol rename renameat renameat2 revoke rewind rindex rint
rintf rintf128 rintf32 rintf32x rintf64 rintf64x rintl rmdir round roundeven roundevenf roundevenf128 roundevenf32
roundevenf32x roundevenf64 roundevenf64x roundevenl roundf roundf128 roundf32 roundf32x roundf64 roundf64x roundl
rpmatch sbrk scalb scalbf scalbl scalbln scalblnf scalblnf128 scalblnf32 scalblnf32x scalblnf64 scalblnf64x scalblnl
scalbn scalbnf scalbnf128 scalbnf32 scalbnf32x scalbnf64 scalbnf64x scalbnl scanf seed48 select send sendto setbuf
setbuffer setdomainname setegid setenv seteuid setgid sethostid sethostname setitimer setlinebuf setlocale setlogin
setns setpayload setpayloadf setpayloadf128 setpayloadf32 setpayloadf32x setpayloadf64 setpayloadf64x setpayloadl
setpayloadsig setpayloadsigf setpayloadsigf128 setpayloadsigf32 setpayloadsigf32x setpayloadsigf64 setpayloadsigf64x
setpayloadsigl setpgid setpgrp setregid setresgid setresuid setreuid setsid setstate settimeofday setuid
setusershell setvbuf shutdown sigaction sigevent signal signgam significand significandf significandl sin sincos
sincosf sincosf128 sincosf32 sincosf32x sincosf64 sincosf64x sincosl sinf sinf128 sinf32 sinf32x sinf64 sinf64x sinh
sinhf sinhf128 sinhf32 sinhf32x sinhf64 sinhf64x sinhl sinl sinpi sinpif sinpif128 sinpif32 sinpif32x sinpif64
sinpif64x sinpil sleep snprintf socket splice sprintf sqrt sqrtf sqrtf128 sqrtf32 sqrtf32x sqrtf64 sqrtf64x sqrtl
srand srand48 srandom sscanf stat statfs statvfs stderr stdin stdout stpcpy stpncpy strcasecmp strcasestr strcat
strchr strchrnul strcmp strcoll strcpy strcspn strdup strerror strfromd strfromf strfromf128 strfromf32 strfromf32x
strfromf64 strfromf64x strfroml strfry strftime strlcat strlcpy strlen strncasecmp strncat strncmp strncpy strndup
strnlen strpbrk strptime strrchr strsep strsignal strspn strstr strtod strtof strtof128 strtof32 strtof32x strtof64
strtof64x strtok strtol strtold strtoll strtoq strtoul strtoull strtouq strverscmp strxfrm swab swprintf swscanf
symlink symlinkat sync syncfs syscall sysconf syslog system tan tanf tanf128 tanf32 tanf32x tanf64 tanf64x tanh
tanhf tanhf128 tanhf32 tanhf32x tanhf64 tanhf64x tanhl tanl tanpi tanpif tanpif128 tanpif32 tanpif32x tanpif64
tanpif64x tanpil tcgetpgrp tcsetpgrp tempnam textdomain tgamma tgammaf tgammaf128 tgammaf32 tgammaf32x tgammaf64
tgammaf64x tgammal time timegm timelocal times timespec timeval timex timezone tm tmpfile tmpfile64 tmpnam toascii
tolower totalorder totalorderf totalorderf128 totalorderf32 totalorderf32x totalorderf64 totalorderf64x totalorderl
totalordermag totalordermagf totalordermagf128 totalordermagf32 totalordermagf32x totalordermagf64 totalordermagf64x
totalordermagl toupper towctrans towlower towupper trunc truncate truncate64 truncf truncf128 truncf32 truncf32x
truncf64 truncf64x truncl ttyname ttyslot tzname tzset ualarm ufromfp ufromfpf ufromfpf128 ufromfpf32 ufromfpf32x
ufromfpf64 ufromfpf64x ufromfpl ufromfpx ufromfpxf ufromfpxf128 ufromfpxf32 ufromfpxf32x ufromfpxf64 ufromfpxf64x
ufromfpxl uint ulong umask ungetc ungetwc unlink unlinkat unlockpt unsetenv unshare uselocale ushort usleep utime
utimes valloc vasprintf vdprintf vfork vfprintf vfscanf vfwprintf vfwscanf vhangup vprintf vscanf vsnprintf vsprintf
vsscanf vswprintf vswscanf vwprintf vwscanf wait wcpcpy wcpncpy wcrtomb wcscasecmp wcscat wcschr wcschrnul wcscmp
wcscoll wcscpy wcscspn wcsdup wcsftime wcslcat wcslcpy wcslen wcsncasecmp wcsncat wcsncmp wcsncpy wcsnlen wcsnrtombs
wcspbrk wcsrchr wcsrtombs wcsspn wcsstr wcstod wcstof wcstof128 wcstof32 wcstof32x wcstof64 wcstof64x wcstok wcstol
wcstold wcstoll wcstombs wcstoq wcstoul wcstoull wcstouq wcswcs wcswidth wcsxfrm wctob wctomb wctrans wctype wcwidth
wmemchr wmemcmp wmemcpy wmemmove wmempcpy wmemset wprintf write wscanf y0 y0f y0f128 y0f32 y0f32x y0f64 y0f64x y0l
y1 y1f y1f128 y1f32 y1f32x y1f64 y1f64x y1l yn ynf ynf128 ynf32 ynf32x ynf64 ynf64x ynl
)";

std::unordered_set<std::string> wordsOf(const char* text)
{
    std::istringstream in(text);
    std::unordered_set<std::string> words;
    for (std::string word; in >> word;) {
        words.insert(word);
    }
    return words;
}

} // namespace

bool isMacro(std::string_view name)
{
    static const auto words = wordsOf(macros);
    return words.contains(std::string(name));
}

bool isGlobal(std::string_view name)
{
    static const auto words = wordsOf(globals);
    return words.contains(std::string(name));
}

} // namespace ovra::plex::idl
