// Includes all public headers of orx.
#pragma once

#include <orx/compat/bstr.h>
#include <orx/compat/export.h>
#include <orx/compat/hkey.h>
#include <orx/compat/variant.h>
#include <orx/containers/binary_tree.h>
#include <orx/containers/generic_list.h>
#include <orx/datetime/date_defaults.h>
#include <orx/datetime/date_time.h>
#include <orx/datetime/date_time_format.h>
#include <orx/datetime/date_time_parse.h>
#include <orx/frame/application_data.h>
#include <orx/frame/debug_log.h>
#include <orx/frame/environment.h>
#include <orx/frame/file_queries.h>
#include <orx/frame/host_callbacks.h>
#include <orx/frame/native_path.h>
#include <orx/geometry/bounding_box.h>
#include <orx/geometry/cutting_plane.h>
#include <orx/projects/current_project.h>
#include <orx/projects/qpr_file.h>
#include <orx/settings/registry.h>
#include <orx/text/angle_text.h>
#include <orx/text/field_value.h>
#include <orx/text/sorting.h>
#include <orx/text/strings.h>
#include <orx/text/token_parser.h>
#include <orx/text/unique_key.h>
#include <orx/version.h>

#if defined(__cplusplus)
#include <orx/geometry/octree.h>
#include <orx/projects/local_settings.h>
#include <orx/projects/platform_catalogue.h>
#include <orx/projects/project_file.h>
#include <orx/projects/qpl_file.h>
#include <orx/text/string_array.h>
#include <orx/xml/xml_document.h>
#endif
