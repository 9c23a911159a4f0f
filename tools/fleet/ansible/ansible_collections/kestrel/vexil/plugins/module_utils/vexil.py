# SPDX-FileCopyrightText: 2026 The Kestrel authors
# SPDX-License-Identifier: Apache-2.0
"""Runs commands of vexil for the modules of this collection."""

from __future__ import absolute_import, division, print_function
__metaclass__ = type

import json
import re

from ansible.module_utils.common.text.converters import to_native, to_text

_KEYS = 'Path,Parameters,Meta Data'
_PROMPT = re.compile(r"Enter value for '[^'\n]*': \n")
_TRUE = ('true', 'yes', 'y', 't', '1', 'on')
_FALSE = ('false', 'no', 'n', 'f', '0', 'off')


class VexilError(Exception):
    """A mistake in a call, or a failure of the tool, with a message for the user."""


class VexilCommand(object):
    """A command of the tool, as the tool describes it."""

    def __init__(self, module, tool, path):
        self._module = module
        self._tool = tool
        self._path = re.split(r'[ .]+', path.strip())
        arguments = ['vexil', 'command', 'describe', '--path', ' '.join(self._path)]
        output = self._run(['--format-param', 'fields=' + _KEYS] + arguments)
        self.description = self._decode(output)

    @property
    def changes(self):
        return {'Name': 'changes', 'Value': 'true'} in self.description['Meta Data']

    def check(self, values):
        """Returns a message for each mistake that can be found before the command runs."""
        problems = []
        declared = dict((each['Name'], each) for each in self.description['Parameters'])
        for name in sorted(set(values) - set(declared)):
            problems.append('unknown parameter: %s' % name)
        for name, parameter in sorted(declared.items()):
            if values.get(name) is not None:
                problems += check_values(parameter, values[name])
            elif parameter['Required']:
                problems.append('missing required parameter: %s' % name)
        return problems

    def hide_secrets(self, values):
        """Keeps the values of secret parameters out of everything that Ansible prints."""
        for parameter in self.description['Parameters']:
            value = values.get(parameter['Name'])
            if parameter['Secret'] and value not in (None, ''):
                self._module.no_log_values.add(to_native(value))

    def run(self, values):
        """Returns the result of the command, with its types."""
        words, secrets = self._words(values)
        for secret in secrets:
            if '\n' in secret:
                raise VexilError('a secret must be one line')
        output = self._run(self._path + words, ''.join(each + '\n' for each in secrets))
        for dummy in secrets:
            output = _PROMPT.sub('', output, count=1)
        return self._decode(output)

    def _words(self, values):
        """Returns the words for the parameters, and the lines that the tool reads for secrets."""
        words, secrets = [], []
        for parameter in self.description['Parameters']:
            name, value = parameter['Name'], values.get(parameter['Name'])
            if value is None or (parameter['Kind'] == 'flag' and not is_true(value)):
                continue
            if parameter['Secret']:
                words.append('--' + name)
                secrets.append(to_text(value))
            elif parameter['Kind'] == 'flag':
                words.append('--' + name)
            else:
                words += ['--%s=%s' % (name, to_word(each)) for each in as_list(value)]
        return words, secrets

    def _run(self, words, data=''):
        status, output, errors = self._module.run_command(
            [self._tool, '--formatter', 'json-utf8'] + words, data=data, binary_data=True)
        if status != 0:
            lines = [line for line in errors.splitlines() if line.strip() not in ('', 'Errors:')]
            raise VexilError('; '.join(lines) or 'vexil ended with status %d' % status)
        return output

    @staticmethod
    def _decode(output):
        try:
            return json.loads(output)
        except ValueError:
            raise VexilError('vexil printed something that is not a result')


def as_list(value):
    return value if isinstance(value, list) else [value]


def is_true(value):
    return value is True or to_text(value).lower() in _TRUE


def to_word(value):
    """Returns a value in the form that the tool reads."""
    return {True: 'true', False: 'false'}[value] if isinstance(value, bool) else to_text(value)


def check_values(parameter, value):
    """Returns a message for each wrong value of one parameter."""
    name = parameter['Name']
    values = as_list(value)
    if len(values) != 1 and not parameter['Multiple']:
        return ['%s has more than one value' % name]
    problems = [check_value(parameter, to_word(each)) for each in values]
    return ['%s: %s' % (name, problem) for problem in problems if problem is not None]


def check_value(parameter, word):
    """Returns what is wrong with a value, or None. Only the tool checks regular expressions."""
    kind = parameter['Kind'].split('-')[0]
    if kind in ('bool', 'flag') and word.lower() not in _TRUE + _FALSE:
        return 'not a boolean: %s' % word
    if kind == 'int' and re.match(r'[+-]?[0-9]+\Z', word) is None:
        return 'not an integer: %s' % word
    bounds = parameter['Bounds']
    if bounds and not bounds[0] <= int(word) <= bounds[1]:
        return 'expected %s' % parameter['Constraint']
    allowed = [each['Value'] for each in parameter['Values']]
    if allowed and word not in allowed:
        return 'expected one of: %s' % ', '.join(allowed)
    return None


def run_module(module, path, values):
    """Runs a command for a module, or only checks its values in check mode; ends the module."""
    try:
        command = VexilCommand(module, module.params['tool'], path)
        command.hide_secrets(values)
        problems = command.check(values)
        if problems:
            raise VexilError('; '.join(problems))
        if module.check_mode:
            module.exit_json(changed=command.changes, result=None)
        module.exit_json(changed=command.changes, result=command.run(values))
    except VexilError as error:
        module.fail_json(msg=to_native(error))
