/* daywyn: the program people type. It needs nothing but the C library, so that starting
   it costs what starting any small program costs:
   - with no verb, it becomes the desktop app (daywyn-app);
   - with --version, it answers itself;
   - with any other verb, it loads the command line (daywyn-command-line.so: the core,
     ICU and simdjson) and hands it the arguments.
   The app and the module sit beside this program in the build tree, and in the libexec
   folder once installed. */
#include <dlfcn.h>
#include <errno.h>
#include <limits.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

/* Where this program lives, without the trailing slash; false when unknown. */
static int programFolder(char* folder, size_t size) {
    const ssize_t length = readlink("/proc/self/exe", folder, size - 1);
    if (length <= 0) {
        return 0;
    }
    folder[length] = '\0';
    char* slash = strrchr(folder, '/');
    if (slash == NULL) {
        return 0;
    }
    *slash = '\0';
    return 1;
}

/* One of Daywyn's files beside this program, else in the installed libexec folder.
   False when neither exists. */
static int helperPath(const char* name, char* path, size_t size) {
    char folder[PATH_MAX];
    if (!programFolder(folder, sizeof folder)) {
        return 0;
    }
    const char* places[] = {"%s/%s", "%s/" DAYWYN_LIBEXEC_FROM_BINDIR "/%s"};
    for (size_t i = 0; i < sizeof places / sizeof places[0]; ++i) {
        const int written = snprintf(path, size, places[i], folder, name);
        if (written > 0 && (size_t)written < size && access(path, F_OK) == 0) {
            return 1;
        }
    }
    return 0;
}

static int startDesktopApp(char** argv) {
    char app[PATH_MAX];
    if (!helperPath("daywyn-app", app, sizeof app)) {
        fputs("Daywyn could not find daywyn-app; is it installed?\n", stderr);
        return 1;
    }
    execv(app, argv);
    fprintf(stderr, "Daywyn could not start %s: %s\n", app, strerror(errno));
    return 1;
}

static int runVerb(int argc, char** argv) {
    char module[PATH_MAX];
    if (!helperPath("daywyn-command-line.so", module, sizeof module)) {
        fputs("Daywyn could not find daywyn-command-line.so; is it installed?\n", stderr);
        return 1;
    }
    /* Never closed: the process ends with the verb. */
    void* handle = dlopen(module, RTLD_LAZY | RTLD_LOCAL);
    void* entry = handle == NULL ? NULL : dlsym(handle, "daywynRunCommandLine");
    int (*run)(int, char**) = NULL;
    memcpy(&run, &entry, sizeof run); /* ISO C has no cast from data to function pointer */
    if (run == NULL) {
        const char* why = dlerror();
        fprintf(stderr, "Daywyn could not load its command line: %s\n", why ? why : module);
        return 1;
    }
    return run(argc, argv);
}

int main(int argc, char** argv) {
    if (argc < 2) {
        return startDesktopApp(argv);
    }
    const char* first = argv[1];
    if (strcmp(first, "--version") == 0 || strcmp(first, "-v") == 0 ||
        strcmp(first, "version") == 0) {
        /* The same line as the core's versionLine(), which this program does not load. */
        puts(DAYWYN_VERSION_LINE);
        return 0;
    }
    return runVerb(argc, argv);
}
