#!/usr/bin/python
# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0

from __future__ import absolute_import, division, print_function
__metaclass__ = type

DOCUMENTATION = r'''
---
module: command
short_description: Run a command of vexil
description:
  - Runs a command of vexil, the management command line of a host.
  - The command describes its parameters and its result, so values are checked before it runs, and
    the result is returned with its types.
  - The values of secret parameters are passed on standard input and are never shown.
version_added: 1.0.0
author:
  - The Kestrel authors (@kestrel)
options:
  path:
    description:
      - The path of the command, its words separated by spaces or full stops.
    type: str
    required: true
  parameters:
    description:
      - The values of the parameters by their long names.
      - A parameter that may be repeated takes a list.
    type: dict
    default: {}
  tool:
    description:
      - The name or the path of the tool on the host.
    type: str
    default: vexil
attributes:
  check_mode:
    description: Checks the values against the description of the command, and runs nothing.
    support: full
'''

EXAMPLES = r'''
- name: List the file systems that are nearly full
  kestrel.vexil.command:
    path: storage filesystem list
    parameters:
      minimum-percent: 90
  register: full

- name: Restart a service
  kestrel.vexil.command:
    path: service restart
    parameters:
      name: nginx
'''

RETURN = r'''
result:
  description: The result of the command, with its types. Null in check mode.
  returned: success
  type: raw
  sample:
    - Name: archive
      Size: 512
'''

from ansible.module_utils.basic import AnsibleModule
from ansible_collections.kestrel.vexil.plugins.module_utils.vexil import run_module


def main():
    module = AnsibleModule(
        argument_spec=dict(
            path=dict(type='str', required=True),
            parameters=dict(type='dict', default={}),
            tool=dict(type='str', default='vexil')),
        supports_check_mode=True)
    run_module(module, module.params['path'], module.params['parameters'])


if __name__ == '__main__':
    main()
