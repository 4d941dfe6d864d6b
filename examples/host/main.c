/* A host in plain C: it loads the library, enters it, lets it make an object, and leaves again. The library
 * must be gone after that, so it goes through the whole circle more than once.
 *
 *     example-host path/to/libqorl-frame.so
 *     example-host --stay path/to/libqorl-frame.so
 *
 * With "--stay" it keeps the library, and looks whether a stay in it leaves memory behind.
 */
#define _GNU_SOURCE
#include "qorl_host.h"

#include <dlfcn.h>
#include <malloc.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static void require(int condition, const char* what) {
    if (condition)
        return;
    fprintf(stderr, "example-host: %s\n", what);
    exit(1);
}

static void* findEntry(void* library, const char* name) {
    void* entry = dlsym(library, name);
    require(entry != NULL, name);
    return entry;
}

static void setKnobs(QorlClasses* classes) {
    QorlSettings* settings = NULL;
    require(classes->table->queryInterface(classes, &qorlSettingsId, (void**)&settings) == 0,
            "no settings face");
    require(settings->table->setHostValue(settings, "KnobMode", "Circular") == 0, "a mode was refused");
    require(settings->table->setHostValue(settings, "KnobMode", "circular") != 0, "a wrong mode was taken");
    require(strcmp(settings->table->getHostValue(settings, "KnobMode"), "Circular") == 0,
            "the mode was lost");
    require(settings->table->getHostValue(settings, "Unknown") == NULL, "an unknown key has a value");
    require(settings->table->setHostValue(settings, "KnobMode", "Linear") == 0,
            "the standard mode was refused");
    settings->table->release(settings);
}

static void useStream(QorlClasses* classes) {
    static const char text[] = "written by the host";
    char back[sizeof text] = "";
    int64_t got = 0;
    QorlObject* object = NULL;
    QorlStream* stream = NULL;
    require(classes->table->createInstance(classes, &qorlMemoryStreamClass, (void**)&object) == 0,
            "no stream");
    require(object->table->queryInterface(object, &qorlStreamId, (void**)&stream) == 0, "no stream face");
    require(stream->table->write(stream, text, sizeof text, &got) == 0, "the stream took nothing");
    require(stream->table->seek(stream, 0, 0, NULL) == 0, "the stream does not go back");
    require(stream->table->read(stream, back, sizeof back, &got) == 0, "the stream gave nothing");
    require(strcmp(text, back) == 0, "the stream gave something else");
    require(stream->table->release(stream) == 1, "the stream counts wrongly");
    require(object->table->release(object) == 0, "the stream does not go");
}

static void askForAnUnknownClass(QorlClasses* classes) {
    const QorlId unknown = {{1}};
    void* object = classes;
    require(classes->table->createInstance(classes, &unknown, &object) == 1, "an unknown class was made");
    require(object == NULL, "an object came of an unknown class");
}

/* Two parts of a host may use the library independently: each enters and leaves. */
static void enterAndLeave(QorlGetHostClasses enter, QorlTerminateModule leave) {
    QorlClasses* classes = enter();
    require(classes != NULL, "the library did not start");
    require(enter() == classes, "the second user got another object");
    leave();
    setKnobs(classes);
    useStream(classes);
    askForAnUnknownClass(classes);
    leave();
}

static void* load(const char* path, QorlGetHostClasses* enter, QorlTerminateModule* leave) {
    void* library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    if (!library)
        fprintf(stderr, "%s\n", dlerror());
    require(library != NULL, "the library can't be loaded");
    /* C has no cast from an object to a function pointer; POSIX has, through memory. */
    void* entry = findEntry(library, "GetHostClasses");
    memcpy(enter, &entry, sizeof *enter);
    entry = findEntry(library, "TerminateModule");
    memcpy(leave, &entry, sizeof *leave);
    return library;
}

static void loadAndUnload(const char* path) {
    QorlGetHostClasses enter;
    QorlTerminateModule leave;
    void* library = load(path, &enter, &leave);
    enterAndLeave(enter, leave);
    enterAndLeave(enter, leave);
    require(dlclose(library) == 0, "the library can't be closed");
    require(dlopen(path, RTLD_NOW | RTLD_NOLOAD) == NULL, "the library stayed in memory");
}

/* What the first stays leave is kept for the next. From then on tables may still find another size, but a
   block left by each stay would be more than a few words for each. */
static void enterManyTimes(const char* path) {
    enum { first = 10, stays = 100, mostBytes = 2 * sizeof(void*) };
    QorlGetHostClasses enter;
    QorlTerminateModule leave;
    load(path, &enter, &leave);
    size_t before = 0;
    for (int stay = 0; stay < first + stays; ++stay) {
        if (stay == first)
            before = mallinfo2().uordblks;
        enterAndLeave(enter, leave);
    }
    const size_t after = mallinfo2().uordblks;
    if (after > before + stays * mostBytes)
        fprintf(stderr, "%zu bytes more after %d stays\n", after - before, stays);
    require(after <= before + stays * mostBytes, "memory is left behind");
}

int main(int count, char** arguments) {
    if (count == 3 && strcmp(arguments[1], "--stay") == 0) {
        enterManyTimes(arguments[2]);
        puts("entered and left the library again and again in one load");
        return 0;
    }
    if (count != 2) {
        fprintf(stderr, "usage: example-host [--stay] LIBRARY\n");
        return 2;
    }
    for (int round = 0; round < 3; ++round)
        loadAndUnload(arguments[1]);
    puts("entered and left the library twice in each of three loads");
    return 0;
}
