#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Draws frames of a model with VTK when asked: vtk_frames.py MODEL.ply WIDTH HEIGHT SAMPLES PASS

Says "ready", its version and the driver on one line; then draws a frame for each line that it reads, finishes it, and
writes the seconds. PASS is none, blur, tone or contour. SAMPLES are those of the window. A pass draws the model into
ordinary textures all the same, so "super" has the model drawn larger and shrunk before the pass, which is how VTK smooths
edges then. It draws into a framebuffer of its own; the window of an X server is needed for the context only.
"""
import sys
import time

from vtkmodules.vtkCommonCore import vtkVersion
from vtkmodules.vtkIOPLY import vtkPLYReader
from vtkmodules.vtkRenderingCore import vtkActor, vtkPolyDataMapper, vtkRenderer, vtkRenderWindow
from vtkmodules.vtkRenderingOpenGL2 import (
    vtkGaussianBlurPass, vtkRenderStepsPass, vtkSobelGradientMagnitudePass, vtkSSAAPass, vtkToneMappingPass)

PASSES = {"blur": vtkGaussianBlurPass, "tone": vtkToneMappingPass, "contour": vtkSobelGradientMagnitudePass}


def scene(model, name, smooth):
    """The model, seen along -z under an angle of 30 degrees, through a pass, with smooth edges if wanted."""
    reader = vtkPLYReader()
    reader.SetFileName(model)
    mapper = vtkPolyDataMapper()
    mapper.SetInputConnection(reader.GetOutputPort())
    actor = vtkActor()
    actor.SetMapper(mapper)
    renderer = vtkRenderer()
    renderer.AddActor(actor)
    renderer.GetActiveCamera().SetViewAngle(30)
    if name != "none":
        steps = vtkRenderStepsPass()
        render_pass = PASSES[name]()
        if smooth:
            larger = vtkSSAAPass()
            larger.SetDelegatePass(steps)
            steps = larger
        render_pass.SetDelegatePass(steps)
        renderer.SetPass(render_pass)
    return renderer


def window(renderer, width, height, samples):
    """A window that draws off-screen."""
    made = vtkRenderWindow()
    made.SetOffScreenRendering(1)
    made.SetMultiSamples(samples)
    made.SetSize(width, height)
    made.AddRenderer(renderer)
    renderer.ResetCamera()
    return made


def driver(made):
    """The line of the driver's report that names the device."""
    lines = made.ReportCapabilities().splitlines()
    return next((line.split(":", 1)[1].strip() for line in lines if "renderer string" in line), "unknown")


def main():
    model, width, height, samples, name = sys.argv[1:]
    smooth = samples == "super"
    made = window(scene(model, name, smooth), int(width), int(height), 0 if smooth else int(samples))

    def draw():
        made.Render()
        made.WaitForCompletion()

    for _ in range(3):
        draw()
    print(f"ready VTK {vtkVersion.GetVTKVersion()}, {driver(made)}", flush=True)
    for _ in sys.stdin:
        start = time.perf_counter()
        draw()
        print(time.perf_counter() - start, flush=True)


if __name__ == "__main__":
    main()
