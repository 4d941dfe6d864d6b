/* The faces of libqorl-frame as a C program sees them: each object begins with a pointer to its table, and
 * each operation takes the object first. Results are 0 for success; see include/qorl/Result.h. */
#ifndef QORL_HOST_H
#define QORL_HOST_H

#include <stdint.h>

typedef struct {
    uint8_t bytes[16];
} QorlId;

#define QORL_ROOT_OPERATIONS(Self)                                                                           \
    int32_t (*queryInterface)(Self * self, const QorlId* id, void** out);                                    \
    uint32_t (*addRef)(Self * self);                                                                         \
    uint32_t (*release)(Self * self)

typedef struct QorlObject QorlObject;
typedef struct {
    QORL_ROOT_OPERATIONS(QorlObject);
} QorlObjectTable;
struct QorlObject {
    const QorlObjectTable* table;
};

typedef struct QorlClasses QorlClasses;
typedef struct {
    QORL_ROOT_OPERATIONS(QorlClasses);
    int32_t (*createInstance)(QorlClasses* self, const QorlId* classId, void** out);
} QorlClassesTable;
struct QorlClasses {
    const QorlClassesTable* table;
};

typedef struct QorlSettings QorlSettings;
typedef struct {
    QORL_ROOT_OPERATIONS(QorlSettings);
    int32_t (*setHostValue)(QorlSettings* self, const char* key, const char* value);
    const char* (*getHostValue)(QorlSettings* self, const char* key);
} QorlSettingsTable;
struct QorlSettings {
    const QorlSettingsTable* table;
};

typedef struct QorlStream QorlStream;
typedef struct {
    QORL_ROOT_OPERATIONS(QorlStream);
    int32_t (*read)(QorlStream* self, void* buffer, int64_t count, int64_t* got);
    int32_t (*write)(QorlStream* self, const void* buffer, int64_t count, int64_t* got);
    int32_t (*seek)(QorlStream* self, int64_t offset, int32_t mode, int64_t* result);
    int32_t (*tell)(QorlStream* self, int64_t* position);
} QorlStreamTable;
struct QorlStream {
    const QorlStreamTable* table;
};

typedef QorlClasses* (*QorlGetHostClasses)(void);
typedef void (*QorlTerminateModule)(void);

/* {04030201-0605-0807-090A-0B0C0D0E0F10} stands in memory as 01 02 03 ... 10. */
static const QorlId qorlSettingsId = {
    {0x92, 0xA6, 0x92, 0x80, 0xAA, 0xD3, 0x76, 0x44, 0x8C, 0x4C, 0x49, 0x17, 0xC1, 0xBF, 0xBE, 0x98}};
static const QorlId qorlStreamId = {
    {0xA2, 0x6E, 0xBF, 0xC3, 0x99, 0x30, 0x52, 0x47, 0x9B, 0x6B, 0xF9, 0x90, 0x1E, 0xE3, 0x3E, 0x9B}};
static const QorlId qorlMemoryStreamClass = {
    {0xED, 0x33, 0x75, 0x0E, 0xDA, 0x80, 0x2B, 0x4E, 0x9D, 0xC3, 0x65, 0x29, 0xC3, 0x04, 0xA5, 0xDF}};

#endif
