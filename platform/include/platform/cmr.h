/* SPDX-License-Identifier: Apache-2.0
 *
 * Client of the BIOS-configuration service: configuration collections, their attributes, and attribute
 * values. All functions return 0 for success. Everything between cmr_api_initialize, which fails where the
 * configuration cannot be read, and cmr_api_uninitialize; these are counted; texts and arrays belong to the
 * client and live until released or until cmr_api_uninitialize.
 */
#ifndef PLATFORM_CMR_H
#define PLATFORM_CMR_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

// NOLINTBEGIN(modernize-use-using): C header
typedef struct cmr_bios_attribute {
  const char* AttributeName;
  const char* SuppressIf;
  const char* GrayIf;
  uint32_t Reserved1[4];
  const char* GroupID;
  const char* GroupName;
  uint32_t Reserved2;
  const char* GroupSuppressIf;
  const char* GroupGrayIf;
  const char* SettingName;
  uint32_t LocationByte1;
  uint32_t Bus; /* 0xFFFF ends the list */
  uint32_t Device;
  uint32_t Function;
  const char* Mriname;
  uint32_t Reserved3;
  const char* ShortDesc;
  const char* FullDesc;
  uint32_t Type; /* 3 number, 4 text, 5 without fields of its own, others a choice */
  uint32_t Flags;
  int32_t Mininstances;
  int32_t Maxinstances;
  const char* Defvalue;
  const char* Mfg_default;
  const char* Defaultaction;
  const char* RecordId;
  uint32_t Minim;
  uint32_t Maxim;
  uint32_t Step;
  uint32_t Mins;
  uint32_t Maxs;
  const char* Pattern;
  int32_t Numchoices;
  const char* Choices;
  uint32_t Reserved4;
} cmr_bios_attribute;

typedef struct cmr_bios_attribute_value {
  uint32_t Reserved;  /* 0 */
  uint32_t Operation; /* 1 get, 2 set */
  const char* SettingID;
  const char* Value;     /* set: the new value; get: an empty text */
  char ValueBuffer[260]; /* get: the answer, not necessarily terminated */
} cmr_bios_attribute_value;
// NOLINTEND(modernize-use-using)

enum { CMR_SELECT_PENDING = 0, CMR_SELECT_CURRENT = 1 };
enum { CMR_OPERATION_GET = 1, CMR_OPERATION_SET = 2 };

int cmr_api_initialize(void);
int cmr_api_uninitialize(void);
/* An entry may be null. */
int cmr_get_bios_collections(char*** names, uint32_t* count);
int cmr_get_bios_attributes(const char* name, cmr_bios_attribute** attributes, uint32_t* count);
int cmr_get_bios_attributes_lite(const char* name, cmr_bios_attribute** attributes, uint32_t* count);
int cmr_free_bios_attributes(const char* name, cmr_bios_attribute* attributes, int flags);
int cmr_get_bios_attribute_value(cmr_bios_attribute_value* requests, int count, int selector);
/* Sets pending values, all or none. */
int cmr_set_bios_attribute_value(cmr_bios_attribute_value* requests, int count);

#ifdef __cplusplus
}

#define CMR_AT(member, offset) \
  static_assert(sizeof(void*) != 4 || offsetof(cmr_bios_attribute, member) == (offset))
CMR_AT(GroupID, 28);
CMR_AT(GroupSuppressIf, 40);
CMR_AT(SettingName, 48);
CMR_AT(Bus, 56);
CMR_AT(Mriname, 68);
CMR_AT(ShortDesc, 76);
CMR_AT(Type, 84);
CMR_AT(Maxinstances, 96);
CMR_AT(Defvalue, 100);
CMR_AT(Minim, 116);
CMR_AT(Mins, 128);
CMR_AT(Pattern, 136);
CMR_AT(Numchoices, 140);
CMR_AT(Choices, 144);
#undef CMR_AT
static_assert(sizeof(void*) != 4 ||
              (sizeof(cmr_bios_attribute) == 152 && sizeof(cmr_bios_attribute_value) == 276));
static_assert(sizeof(void*) != 8 ||
              (sizeof(cmr_bios_attribute) == 240 && sizeof(cmr_bios_attribute_value) == 288));
#endif

#endif
