#pragma once

/**
 * @file
 * The daemon's service for those who only hand it on. Who calls it includes im_SIControlSrv.h,
 * which takes long to compile.
 */
namespace tevra::thrift::in_module {

class im_SIControlSrvIf;

}  // namespace tevra::thrift::in_module
